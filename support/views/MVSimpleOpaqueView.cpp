#include "support/views/MVSimpleOpaqueView.h"

#include <QMouseEvent>
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

// Accepted, so that the release comes too.
void MVSimpleOpaqueView::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}

void MVSimpleOpaqueView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        Q_EMIT clicked();
}

void MVSimpleOpaqueView::drawRect(const QRect& dirtyRect)
{
    if (!m_backgroundColor)
        return;
    QPainter painter(this);
    painter.fillRect(dirtyRect, *m_backgroundColor);
}
