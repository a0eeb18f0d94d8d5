#pragma once

#include "attestation/document/PdfFile.h"
#include "attestation/text/FontFace.h"

#include <QString>

#include <map>
#include <optional>
#include <string>
#include <vector>

/// A font of a document: those glyphs of a face that the document shows, each under a code of its own for each text
/// that it stands for, so that what is read back is the text that was shown.
class PdfFont
{
public:
    explicit PdfFont(const FontFace& face)
        : m_face(face)
    {
    }

    /// The code of the glyph where it stands for the text; 0, which shows the missing glyph, when there are no more
    /// codes.
    [[nodiscard]] unsigned codeOf(hb_codepoint_t glyph, QStringView text);

    /// The font's dictionary, with its font file, for the codes that were asked for. Nothing when the face cannot be
    /// cut.
    [[nodiscard]] std::optional<PdfReference> embedIn(PdfFile& file) const;

private:
    struct Character
    {
        hb_codepoint_t glyph = 0;
        QString text;
    };

    struct Cut // the face with those glyphs alone
    {
        std::string program;          // a font file; of PostScript outlines their table, by codes
        std::vector<unsigned> glyphs; // of each code, in the font file
    };

    [[nodiscard]] hb_codepoint_t glyphOf(unsigned code) const { return code == 0 ? 0 : m_characters[code - 1].glyph; }
    [[nodiscard]] unsigned codeCount() const { return unsigned(m_characters.size()) + 1; }
    [[nodiscard]] std::optional<Cut> cutFace() const;
    [[nodiscard]] std::string name() const;
    [[nodiscard]] PdfReference addDescriptor(PdfFile& file, const std::string& program, const std::string& name) const;
    [[nodiscard]] std::string widths() const;
    [[nodiscard]] std::string toUnicode() const;
    [[nodiscard]] std::string cidSet() const;
    /// The font's units as thousandths of its size.
    [[nodiscard]] std::string inThousandths(double units) const;

    const FontFace& m_face;
    std::vector<Character> m_characters; // of code 1 and on
    std::map<hb_codepoint_t, std::vector<unsigned>> m_codes;
};
