#pragma once

#include <QColor>
#include <QRect>

class QPainter;
class QPushButton;

/// Draws a push button with its image above its title in the platform's style. Rectangles are in the button's
/// coordinates, y grows downwards.
class ButtonCell
{
public:
    ButtonCell() = default;
    virtual ~ButtonCell() = default;
    Q_DISABLE_COPY_MOVE(ButtonCell)

    /// Image and title together are centred in the bounds; the image is at the top.
    [[nodiscard]] virtual QRect imageRectForBounds(const QRect& bounds, const QPushButton& controlView) const;
    /// The title is the last line.
    [[nodiscard]] QRect titleRectForBounds(const QRect& bounds, const QPushButton& controlView) const;
    /// The size that image and title need.
    [[nodiscard]] QSize cellSize(const QPushButton& controlView) const;

    void drawWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const;
    /// The background.
    virtual void drawBezelWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const;
    /// The colour of image, title and focus ring.
    [[nodiscard]] virtual QColor inkColor(const QPushButton& controlView) const;

private:
    void drawInteriorWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const;
    void drawFocusRingWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const;
};
