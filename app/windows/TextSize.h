#pragma once

#include <QFont>

/// The font, larger or smaller, whichever unit its size is in: the user's own size of text stays the measure.
[[nodiscard]] inline QFont scaledFont(QFont font, double factor, QFont::Weight weight = QFont::Normal)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    font.setWeight(weight);
    return font;
}
