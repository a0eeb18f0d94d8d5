#pragma once

#include <QFont>

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
