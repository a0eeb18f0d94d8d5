#pragma once

#include "support/views/ButtonCell.h"

#include <optional>

/// The look of a tile: one flat colour, the same in every state, or nothing at all behind image and title.
class MXButtonCell final : public ButtonCell
{
public:
    [[nodiscard]] const std::optional<QColor>& backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(std::optional<QColor> colour) { m_backgroundColor = colour; }

    /// The platform's rectangle, 8 points lower: air above the image.
    [[nodiscard]] QRect imageRectForBounds(const QRect& bounds, const QPushButton& controlView) const override;
    /// Fills the whole frame with the background colour; without one, draws nothing.
    void drawBezelWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const override;
    /// What reads best on the background colour; without one, the colour of text in the window.
    [[nodiscard]] QColor inkColor(const QPushButton& controlView) const override;

private:
    std::optional<QColor> m_backgroundColor;
};
