#include "support/views/MVSimpleOpaqueView.h"

#include <QPaintEvent>
#include <QPainter>

MVSimpleOpaqueView::MVSimpleOpaqueView(QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void MVSimpleOpaqueView::setBackgroundColor(std::optional<QColor> colour)
{
    m_backgroundColor = colour;
    update();
}

void MVSimpleOpaqueView::paintEvent(QPaintEvent* event)
{
    QWidget::paintEvent(event);
    drawRect(event->rect());
}

void MVSimpleOpaqueView::drawRect(const QRect& dirtyRect)
{
    if (!m_backgroundColor)
        return;
    QPainter painter(this);
    painter.fillRect(dirtyRect, *m_backgroundColor);
}
