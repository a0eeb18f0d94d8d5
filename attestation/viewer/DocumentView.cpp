#include "attestation/viewer/DocumentView.h"

#include <QPainter>

void DocumentView::setDocumentSize(QSizeF size)
{
    if (size == m_documentSize)
        return;
    m_documentSize = size;
    updateGeometry();
    Q_EMIT documentSizeChanged();
}

void DocumentView::setPlacement(const QTransform& toParent)
{
    // Widgets have integer geometry: this one covers all pixels that the document touches.
    const QRect place = toParent.mapRect(QRectF(QPointF(), m_documentSize)).toAlignedRect();
    const QTransform toWidget = toParent * QTransform::fromTranslate(-place.x(), -place.y());
    setGeometry(place);
    if (toWidget != m_toWidget) {
        m_toWidget = toWidget;
        update();
    }
}

QRect DocumentView::placeOf(const QRectF& part) const
{
    return m_toWidget.mapRect(part).toAlignedRect();
}

void DocumentView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setTransform(m_toWidget, true);
    drawRect(painter);
}
