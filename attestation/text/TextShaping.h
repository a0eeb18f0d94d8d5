#pragma once

#include "attestation/text/PageFonts.h"

#include <QPointF>
#include <QString>

#include <vector>

/// A glyph and where it stands, in points from the left end of its text's baseline, y downwards.
struct PlacedGlyph
{
    hb_codepoint_t glyph = 0;
    QPointF position;
    double advance = 0;
    /// The part of the text that the glyph stands for; of the glyphs that share a part, the first has it.
    qsizetype textStart = 0;
    qsizetype textLength = 0;
};

/// Glyphs of one face, from left to right; at least one.
struct GlyphRun
{
    const FontFace* face = nullptr; ///< lives as long as the font
    std::vector<PlacedGlyph> glyphs;
};

struct ShapedText
{
    std::vector<GlyphRun> runs; ///< from left to right
    double width = 0;           ///< in points
};

/// The glyphs of one line, which holds drawable characters alone. The page's own face is set glyph by glyph; what it
/// has not, in the order and the forms that its writing asks for: from right to left, joined, marks above their
/// letters.
[[nodiscard]] ShapedText shapedText(QStringView line, const PageFont& font);

/// The width of shapedText(), in points.
[[nodiscard]] double widthOfText(QStringView line, const PageFont& font);

/// Whether every character is a Latin letter or a sign that stands by itself, from left to right.
[[nodiscard]] bool isPlainText(QStringView text);
