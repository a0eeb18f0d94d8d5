#pragma once

#include <QWidget>

/// Makes screen readers say a text as a notification, whatever has the focus, because they do not announce changed
/// labels. It is invisible. Main thread only.
class SpokenNotice final : public QWidget
{
    Q_OBJECT

public:
    explicit SpokenNotice(QWidget* parent);

    /// Says the text, also if it is the same as before; an empty one ends the notification.
    void say(const QString& text);
};
