#pragma once

#include "attestation/text/PageFonts.h"

#include <QList>
#include <QString>

/// One line of a broken text: what is drawn, without blanks at its end, and how wide that is, in points.
struct BrokenLine
{
    QString text;
    double width = 0;
    bool splitsWord = false; ///< whether the next line goes on with the same word
};

/// The text as the page can draw it: composed characters, "\n" for every kind of line break, a space for a tab, and
/// without the other control and format characters, which no font can show; cut to what a page can hold.
[[nodiscard]] QString drawableText(const QString& text);

/// The text with U+FFFD, which the page's font has, in the place of each character that no font has: a document must
/// not refer to glyphs that are not there.
[[nodiscard]] QString textWithKnownGlyphs(const QString& text, const PageFont& font);

/// What the page shows of a text in that font: drawable, and of known glyphs only.
[[nodiscard]] QString shownText(const QString& text, const PageFont& font);

/// Breaks a drawable text into lines at each "\n" and, within the width (points), between words; a word too long for a
/// line is broken anywhere. No more lines are made than asked for: what would lie below them is left out.
[[nodiscard]] QList<BrokenLine> breakText(const QString& text, const PageFont& font, double width,
                                          qsizetype maximumLines);
