#pragma once

#include <QFont>
#include <QWidget>

/// The font scaled in its own unit, so that it follows the user's text size.
[[nodiscard]] inline QFont scaledFont(QFont font, double factor, QFont::Weight weight = QFont::Normal)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    font.setWeight(weight);
    return font;
}

/// The size of the widget's text in pixels. It does not look for the font, which takes long.
[[nodiscard]] inline double textSize(const QWidget& widget)
{
    constexpr double pointsPerInch = 72;
    const QFont& font = widget.font();
    return font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * widget.logicalDpiY() / pointsPerInch;
}
