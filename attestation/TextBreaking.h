#pragma once

#include "attestation/PageFonts.h"

#include <QList>
#include <QString>

/// One line of a broken text: what is drawn, without blanks at its end, and how wide that is, in points.
struct BrokenLine
{
    QString text;
    double width = 0;
};

/// The text as the page can draw it: composed characters, "\n" for every kind of line break, a space for a tab, and
/// without the other control characters, which no font can show.
[[nodiscard]] QString drawableText(const QString& text);

/// Breaks a drawable text into lines at each "\n" and, within the width (points), between words; a word too long for a
/// line is broken anywhere.
[[nodiscard]] QList<BrokenLine> breakText(const QString& text, const PageFont& font, double width);
