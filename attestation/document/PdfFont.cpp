#include "attestation/document/PdfFont.h"

#include "attestation/document/CffTable.h"
#include "attestation/document/PdfNumber.h"

#include <QCryptographicHash>
#include <QtEndian>
#include <fmt/format.h>

#include <array>
#include <memory>

#include <hb-ot.h>
#include <hb-subset.h>

namespace {

// With code 0 it is the most that a font can have.
constexpr unsigned mostCodes = 0xfffe;

using InputPtr = std::unique_ptr<hb_subset_input_t, decltype(&hb_subset_input_destroy)>;
using PlanPtr = std::unique_ptr<hb_subset_plan_t, decltype(&hb_subset_plan_destroy)>;
using FacePtr = std::unique_ptr<hb_face_t, decltype(&hb_face_destroy)>;
using BlobPtr = std::unique_ptr<hb_blob_t, decltype(&hb_blob_destroy)>;

// What documents need of a font is its outlines and measures.
void dropLayoutTables(hb_subset_input_t* input)
{
    constexpr std::array unneeded{
        HB_TAG('c', 'm', 'a', 'p'), HB_TAG('n', 'a', 'm', 'e'), HB_TAG('p', 'o', 's', 't'), HB_TAG('O', 'S', '/', '2'),
        HB_TAG('G', 'S', 'U', 'B'), HB_TAG('G', 'P', 'O', 'S'), HB_TAG('G', 'D', 'E', 'F'), HB_TAG('f', 'v', 'a', 'r'),
        HB_TAG('g', 'v', 'a', 'r'), HB_TAG('a', 'v', 'a', 'r'), HB_TAG('H', 'V', 'A', 'R'), HB_TAG('M', 'V', 'A', 'R'),
        HB_TAG('S', 'T', 'A', 'T'), HB_TAG('D', 'S', 'I', 'G'), HB_TAG('m', 'e', 't', 'a'), HB_TAG('g', 'a', 's', 'p'),
    };
    hb_set_t* dropped = hb_subset_input_set(input, HB_SUBSET_SETS_DROP_TABLE_TAG);
    for (const hb_tag_t tag : unneeded)
        hb_set_add(dropped, tag);
}

} // namespace

unsigned PdfFont::codeOf(hb_codepoint_t glyph, QStringView text)
{
    std::vector<unsigned>& codes = m_codes[glyph];
    for (const unsigned code : codes) {
        if (m_characters[code - 1].text == text)
            return code;
    }
    if (m_characters.size() == mostCodes)
        return 0;
    m_characters.push_back({glyph, text.toString()});
    return codes.emplace_back(unsigned(m_characters.size()));
}

std::optional<PdfFont::Cut> PdfFont::cutFace() const
{
    const InputPtr input(hb_subset_input_create_or_fail(), &hb_subset_input_destroy);
    if (!input)
        return std::nullopt;
    hb_set_t* kept = hb_subset_input_glyph_set(input.get());
    hb_set_add(kept, 0);
    for (const Character& character : m_characters)
        hb_set_add(kept, character.glyph);
    // Subroutines are those of PostScript outlines.
    hb_subset_input_set_flags(input.get(), HB_SUBSET_FLAGS_NO_HINTING | HB_SUBSET_FLAGS_NOTDEF_OUTLINE |
                                               HB_SUBSET_FLAGS_DESUBROUTINIZE);
    dropLayoutTables(input.get());

    const PlanPtr plan(hb_subset_plan_create_or_fail(m_face.face(), input.get()), &hb_subset_plan_destroy);
    if (!plan)
        return std::nullopt;
    const FacePtr face(hb_subset_plan_execute_or_fail(plan.get()), &hb_face_destroy);
    if (!face)
        return std::nullopt;
    const bool isPostScript = m_face.isPostScript();
    const BlobPtr blob(isPostScript ? hb_face_reference_table(face.get(), HB_TAG('C', 'F', 'F', ' '))
                                    : hb_face_reference_blob(face.get()),
                       &hb_blob_destroy);
    unsigned length = 0;
    const char* bytes = hb_blob_get_data(blob.get(), &length);

    Cut cut{.program = {bytes, length}, .glyphs = {}};
    const hb_map_t* newGlyphs = hb_subset_plan_old_to_new_glyph_mapping(plan.get());
    for (unsigned code = 0; code < codeCount(); ++code)
        cut.glyphs.push_back(hb_map_get(newGlyphs, glyphOf(code)));
    if (isPostScript) {
        std::optional<std::string> table = cffTableWithGlyphs(cut.program, cut.glyphs);
        if (!table)
            return std::nullopt;
        cut.program = std::move(*table);
    }
    return cut;
}

// Six letters that the glyphs tell, and the face's own name without what a name must not hold.
std::string PdfFont::name() const
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const Character& character : m_characters) {
        const std::string text = hexadecimal(character.glyph) + hexadecimal(character.text);
        hash.addData(QByteArrayView(text.data(), qsizetype(text.size())));
    }
    const QByteArray digest = hash.result();
    std::string name;
    for (qsizetype i = 0; i < 6; ++i)
        name += char('A' + uchar(digest[i]) % 26);
    name += '+';

    std::array<char, 64> own{};
    auto size = unsigned(own.size());
    hb_ot_name_get_utf8(m_face.face(), HB_OT_NAME_ID_POSTSCRIPT_NAME, HB_LANGUAGE_INVALID, &size, own.data());
    for (const char character : std::string(own.data())) {
        if ((character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
            (character >= '0' && character <= '9') || character == '-')
            name += character;
    }
    return name;
}

// For readers that look for a similar font. This document's own is always there.
PdfReference PdfFont::addDescriptor(PdfFile& file, const std::string& program, const std::string& name) const
{
    constexpr int symbolic = 4;
    constexpr int usualStem = 80;
    const BlobPtr head(hb_face_reference_table(m_face.face(), HB_TAG('h', 'e', 'a', 'd')), &hb_blob_destroy);
    unsigned length = 0;
    const char* bytes = hb_blob_get_data(head.get(), &length);
    std::string box;
    constexpr unsigned boxOffset = 36;
    for (unsigned i = 0; i < 4; ++i) {
        const unsigned at = boxOffset + 2 * i;
        box += ' ' + inThousandths(at + 2 <= length ? qFromBigEndian<qint16>(bytes + at) : 0);
    }
    const bool isPostScript = m_face.isPostScript();
    const std::string entries = isPostScript ? "/Subtype /CIDFontType0C " : fmt::format("/Length1 {} ", program.size());
    const std::string ascent = inThousandths(m_face.ascent());
    return file.add(
        fmt::format("<< /Type /FontDescriptor /FontName /{} /Flags {} /FontBBox [{}] /ItalicAngle 0 /Ascent {} "
                    "/Descent {} /CapHeight {} /StemV {} /CIDSet {} /{} {} >>",
                    name, symbolic, box, ascent, inThousandths(-m_face.descent()), ascent, usualStem,
                    file.addStream(cidSet()).text(), isPostScript ? "FontFile3" : "FontFile2",
                    file.addStream(program, entries).text()));
}

std::string PdfFont::widths() const
{
    std::string widths;
    for (unsigned code = 0; code < codeCount(); ++code)
        widths += ' ' + inThousandths(m_face.advanceOf(glyphOf(code)));
    return widths;
}

std::string PdfFont::inThousandths(double units) const
{
    return pdfNumber(units * 1000 / m_face.unitsPerEm());
}

// A bit for each character that the font has, the first in the highest bit.
std::string PdfFont::cidSet() const
{
    std::string bits((codeCount() + 7) / 8, '\0');
    for (unsigned code = 0; code < codeCount(); ++code)
        bits[code / 8] = char(uchar(bits[code / 8]) | (0x80U >> (code % 8)));
    return bits;
}

std::string PdfFont::toUnicode() const
{
    constexpr std::size_t mostLines = 100; // that the format allows to a block
    std::string map = "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
                      "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
                      "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n"
                      "1 begincodespacerange\n<0000> <FFFF>\nendcodespacerange\n";
    for (std::size_t first = 0; first < m_characters.size(); first += mostLines) {
        const std::size_t end = std::min(first + mostLines, m_characters.size());
        map += std::to_string(end - first) + " beginbfchar\n";
        for (std::size_t i = first; i < end; ++i)
            map += '<' + hexadecimal(unsigned(i) + 1) + "> <" + hexadecimal(m_characters[i].text) + ">\n";
        map += "endbfchar\n";
    }
    return map + "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
}

std::optional<PdfReference> PdfFont::embedIn(PdfFile& file) const
{
    const std::optional<Cut> cut = cutFace();
    if (!cut)
        return std::nullopt;
    const std::string fontName = name();
    std::string kind = "/CIDFontType0";
    if (!m_face.isPostScript()) {
        std::string glyphs;
        for (const unsigned glyph : cut->glyphs)
            glyphs += {char(glyph >> 8U), char(glyph & 0xffU)};
        kind = fmt::format("/CIDFontType2 /CIDToGIDMap {}", file.addStream(glyphs).text());
    }
    const PdfReference descendant =
        file.add(fmt::format("<< /Type /Font /Subtype {} /BaseFont /{} "
                             "/CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) /Supplement 0 >> "
                             "/FontDescriptor {} /DW 0 /W [0 [{}]] >>",
                             kind, fontName, addDescriptor(file, cut->program, fontName).text(), widths()));
    return file.add(fmt::format(
        "<< /Type /Font /Subtype /Type0 /BaseFont /{} /Encoding /Identity-H /DescendantFonts [{}] /ToUnicode {} >>",
        fontName, descendant.text(), file.addStream(toUnicode()).text()));
}
