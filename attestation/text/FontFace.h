#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

#include <hb.h>

/// One face of a font file: its glyphs and their measures, in font units (unitsPerEm of them are the font's size).
/// Immutable, any thread.
class FontFace final
{
public:
    /// The face of that index in the file; null when the file cannot be read, has neither TrueType outlines nor
    /// PostScript ones of a single design, or must not be put into documents. A damaged font may be loaded: see
    /// isIntact().
    [[nodiscard]] static std::unique_ptr<const FontFace> load(const QString& path, unsigned index = 0);

    /// Whether the file's checksum agrees with its content: of files that hold one face.
    [[nodiscard]] bool isIntact() const;

    /// Whether the outlines are PostScript's, in a "CFF " table.
    [[nodiscard]] bool isPostScript() const { return m_isPostScript; }

    [[nodiscard]] double unitsPerEm() const { return m_unitsPerEm; }
    /// Above and below the baseline, and the height of a line; all positive.
    [[nodiscard]] double ascent() const { return m_ascent; }
    [[nodiscard]] double descent() const { return m_descent; }
    [[nodiscard]] double lineHeight() const { return m_lineHeight; }

    /// The glyph of a character on its own; absent when the face has none, or none whose PostScript outline can be
    /// read.
    [[nodiscard]] std::optional<hb_codepoint_t> glyphOf(char32_t character) const;
    [[nodiscard]] double advanceOf(hb_codepoint_t glyph) const;

    /// A font file of this face alone. It may be the bytes of the face's own, which live as long as the face.
    [[nodiscard]] QByteArray file() const;

    /// As HarfBuzz's functions want it, the size being unitsPerEm. It lives as long as the face.
    [[nodiscard]] hb_font_t* font() const { return m_font.get(); }
    [[nodiscard]] hb_face_t* face() const { return m_face.get(); }

private:
    using FacePtr = std::unique_ptr<hb_face_t, decltype(&hb_face_destroy)>;
    using FontPtr = std::unique_ptr<hb_font_t, decltype(&hb_font_destroy)>;

    FontFace(FacePtr face, bool isOneOfMany);

    bool m_isOneOfMany; // of a collection, in one file
    FacePtr m_face;
    bool m_isPostScript;
    FontPtr m_font;
    double m_unitsPerEm = 0;
    double m_ascent = 0;
    double m_descent = 0;
    double m_lineHeight = 0;
};
