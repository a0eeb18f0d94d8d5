#include "support/views/MXButton.h"

#include <QPainter>

MXButton::MXButton(QWidget* parent)
    : QPushButton(parent)
{
    setCursor(Qt::PointingHandCursor);
}

void MXButton::setBackgroundColor(std::optional<QColor> colour)
{
    m_cell.setBackgroundColor(colour);
    update();
}

QSize MXButton::sizeHint() const
{
    return m_cell.cellSize(*this);
}

QSize MXButton::minimumSizeHint() const
{
    return m_cell.cellSize(*this);
}

void MXButton::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    m_cell.drawWithFrame(rect(), *this, painter);
}
