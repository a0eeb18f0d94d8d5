#pragma once

#include <QWidget>

/// Has screen readers say a text, whatever has the keyboard: to them it is a notification that appears. Nothing of it
/// is to be seen: the text is shown elsewhere. Changed texts of labels are not said by themselves. Main thread only.
class SpokenNotice final : public QWidget
{
    Q_OBJECT

public:
    explicit SpokenNotice(QWidget* parent);

    /// Says the text, also when it is the same as before; an empty one ends the notification.
    void say(const QString& text);
};
