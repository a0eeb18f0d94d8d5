#pragma once

#include "attestation/text/FontFace.h"

#include <QString>
#include <qpdf/QPDFObjectHandle.hh>

#include <map>
#include <string>
#include <vector>

class QPDF;

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

    /// The font's dictionary, with its file, for the codes that were asked for. Throws when memory is short or the face
    /// cannot be cut.
    [[nodiscard]] QPDFObjectHandle embedIn(QPDF& document) const;

private:
    struct Character
    {
        hb_codepoint_t glyph = 0;
        QString text;
    };

    struct Cut // the face with those glyphs alone
    {
        std::string file;
        std::vector<unsigned> glyphs; // of each code
    };

    [[nodiscard]] hb_codepoint_t glyphOf(unsigned code) const { return code == 0 ? 0 : m_characters[code - 1].glyph; }
    [[nodiscard]] unsigned codeCount() const { return unsigned(m_characters.size()) + 1; }
    [[nodiscard]] Cut cutFace() const;
    [[nodiscard]] std::string name() const;
    [[nodiscard]] QPDFObjectHandle descriptor(QPDF& document, const std::string& file) const;
    [[nodiscard]] QPDFObjectHandle widths() const;
    [[nodiscard]] std::string toUnicode() const;
    [[nodiscard]] std::string cidSet() const;
    [[nodiscard]] double inThousandths(double units) const { return units * 1000 / m_face.unitsPerEm(); }

    const FontFace& m_face;
    std::vector<Character> m_characters; // of code 1 and on
    std::map<hb_codepoint_t, std::vector<unsigned>> m_codes;
};
