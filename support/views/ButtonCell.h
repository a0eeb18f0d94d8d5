#pragma once

#include <QColor>
#include <QRect>
#include <QSize>

class QPainter;
class QPushButton;

/// Draws a push button with its image above its title: the platform's way, for other looks to build on. A cell keeps
/// nothing of the button; rectangles are in the button's coordinates, y grows downwards.
class ButtonCell
{
public:
    ButtonCell() = default;
    virtual ~ButtonCell() = default;
    Q_DISABLE_COPY_MOVE(ButtonCell)

    /// Where the image goes: at the top of the block that image and title make, which is centred in the bounds.
    [[nodiscard]] virtual QRect imageRectForBounds(const QRect& bounds, const QPushButton& controlView) const;
    /// Where the title goes: the last line of that block.
    [[nodiscard]] QRect titleRectForBounds(const QRect& bounds, const QPushButton& controlView) const;
    /// The room that image and title need.
    [[nodiscard]] QSize cellSize(const QPushButton& controlView) const;

    /// Everything, in painting order.
    void drawWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const;
    /// What lies below image and title.
    virtual void drawBezelWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const;
    /// The colour of image, title and focus ring.
    [[nodiscard]] virtual QColor inkColor(const QPushButton& controlView) const;

private:
    void drawInteriorWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const;
    void drawFocusRingWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const;
};
