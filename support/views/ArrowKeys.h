#pragma once

#include <QList>
#include <QObject>

class QWidget;

/// Makes the arrow keys move the focus among widgets of one window to the nearest one in the key's direction, left and
/// right within a row. Disabled and hidden ones are passed over. At the edge the focus stays. Main thread only.
class ArrowKeys final : public QObject
{
    Q_OBJECT

public:
    /// The widgets must outlive it.
    explicit ArrowKeys(const QList<QWidget*>& widgets);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] QWidget* nearest(const QWidget& from, int key) const;

    QList<QWidget*> m_widgets;
};
