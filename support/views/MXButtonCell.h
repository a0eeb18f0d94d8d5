#pragma once

#include "support/views/ButtonCell.h"

#include <optional>

/// Draws a tile: one colour in every state, or no background.
class MXButtonCell final : public ButtonCell
{
public:
    [[nodiscard]] const std::optional<QColor>& backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(std::optional<QColor> colour) { m_backgroundColor = colour; }

    /// The platform's rectangle, 8 points lower.
    [[nodiscard]] QRect imageRectForBounds(const QRect& bounds, const QPushButton& controlView) const override;
    /// Without a background colour, draws nothing.
    void drawBezelWithFrame(const QRect& frame, const QPushButton& controlView, QPainter& painter) const override;
    /// The most legible ink on the background colour; without one, the window's text colour.
    [[nodiscard]] QColor inkColor(const QPushButton& controlView) const override;

private:
    std::optional<QColor> m_backgroundColor;
};
