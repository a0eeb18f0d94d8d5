#pragma once

#include <QCoreApplication>
#include <QList>
#include <QPaintEvent>
#include <QRect>
#include <QWidget>

/// The regions that a shown widget repaints, recorded after it has been painted completely.
class PaintRecord final : public QObject
{
public:
    explicit PaintRecord(QWidget& widget)
    {
        QCoreApplication::processEvents();
        widget.installEventFilter(this);
    }

    [[nodiscard]] const QList<QRect>& painted() const { return m_painted; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            m_painted.append(static_cast<QPaintEvent*>(event)->rect());
        return QObject::eventFilter(watched, event);
    }

private:
    QList<QRect> m_painted;
};
