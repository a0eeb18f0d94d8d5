#include "support/views/ButtonCell.h"

#include <QPainter>
#include <QPen>
#include <QPushButton>
#include <QStyleOptionButton>

#include <algorithm>

namespace {

constexpr int grid = 8;              // pixels: all distances are multiples of it
constexpr double disabledInk = 0.45; // opacity of a disabled button: legible, but visibly disabled
constexpr int ringInset = 4;         // from the button's edge to the focus ring
constexpr double ringWidth = 2;

// The image grows with the button up to twice its size, to fill a large window.
int imageSide(const QRect& bounds, const QPushButton& button)
{
    const int side = button.iconSize().height();
    const int room = bounds.height() * 2 / 5;
    return std::clamp(room, side, 2 * side);
}

int titleHeight(const QPushButton& button)
{
    return button.fontMetrics().height();
}

// From top to bottom: image, grid, grid, title, grid.
QRect block(const QRect& bounds, const QPushButton& button)
{
    const int height = imageSide(bounds, button) + titleHeight(button) + 3 * grid;
    return {bounds.left(), bounds.top() + (bounds.height() - height) / 2, bounds.width(), height};
}

bool showsFocus(const QPushButton& button)
{
    // The ring is shown to users of the keyboard only.
    return button.hasFocus() && button.window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

} // namespace

QRect ButtonCell::imageRectForBounds(const QRect& bounds, const QPushButton& controlView) const
{
    const QRect room = block(bounds, controlView);
    const int side = imageSide(bounds, controlView);
    return {room.left() + (room.width() - side) / 2, room.top(), side, side};
}

QRect ButtonCell::titleRectForBounds(const QRect& bounds, const QPushButton& controlView) const
{
    const QRect room = block(bounds, controlView).adjusted(grid, 0, -grid, -grid);
    const int height = titleHeight(controlView);
    return {room.left(), room.bottom() + 1 - height, room.width(), height};
}

QSize ButtonCell::cellSize(const QPushButton& controlView) const
{
    const int side = controlView.iconSize().height();
    const int width = std::max(side, controlView.fontMetrics().horizontalAdvance(controlView.text()));
    return {width + 4 * grid, side + titleHeight(controlView) + 3 * grid};
}

void ButtonCell::drawWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const
{
    drawBezelWithFrame(frame, controlView, painter);
    drawInteriorWithFrame(frame, controlView, painter);
    if (showsFocus(controlView))
        drawFocusRingWithFrame(frame, controlView, painter);
}

void ButtonCell::drawBezelWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const
{
    QStyleOptionButton option;
    option.initFrom(&controlView);
    option.rect = frame;
    option.state |= controlView.isDown() ? QStyle::State_Sunken : QStyle::State_Raised;
    controlView.style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, &controlView);
}

QColor ButtonCell::inkColor(const QPushButton& controlView) const
{
    return controlView.palette().color(QPalette::Active, QPalette::ButtonText);
}

void ButtonCell::drawInteriorWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const
{
    painter.save();
    painter.setFont(controlView.font());
    painter.setPen(inkColor(controlView));
    if (!controlView.isEnabled())
        painter.setOpacity(disabledInk);
    if (controlView.isDown())
        painter.translate(1, 1);

    controlView.icon().paint(&painter, imageRectForBounds(frame, controlView));
    const QRect title = titleRectForBounds(frame, controlView);
    const QString shown = controlView.fontMetrics().elidedText(controlView.text(), Qt::ElideRight, title.width());
    painter.drawText(title, Qt::AlignCenter | Qt::TextSingleLine, shown);
    painter.restore();
}

void ButtonCell::drawFocusRingWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const
{
    painter.save();
    painter.setPen(QPen(inkColor(controlView), ringWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame.adjusted(ringInset, ringInset, -ringInset, -ringInset));
    painter.restore();
}
