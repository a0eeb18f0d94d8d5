#include "support/views/MXButtonCell.h"

#include "support/views/ReadableInk.h"

#include <QPainter>
#include <QPushButton>

QRect MXButtonCell::imageRectForBounds(const QRect& bounds, const QPushButton& controlView) const
{
    return ButtonCell::imageRectForBounds(bounds, controlView).translated(0, 8);
}

void MXButtonCell::drawBezelWithFrame(const QRect& frame, const QPushButton& /*controlView*/, QPainter& painter) const
{
    if (m_backgroundColor)
        painter.fillRect(frame, *m_backgroundColor);
}

QColor MXButtonCell::inkColor(const QPushButton& controlView) const
{
    return m_backgroundColor ? readableInk(*m_backgroundColor)
                             : controlView.palette().color(QPalette::Active, QPalette::WindowText);
}
