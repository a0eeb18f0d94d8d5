#include "attestation/text/FontFace.h"

#include <QFile>
#include <QtEndian>

#include <array>
#include <utility>

namespace {

using BlobPtr = std::unique_ptr<hb_blob_t, decltype(&hb_blob_destroy)>;

BlobPtr tableOf(hb_face_t* face, const char (&name)[5]) // NOLINT(modernize-avoid-c-arrays): it takes only four letters
{
    return {hb_face_reference_table(face, HB_TAG(name[0], name[1], name[2], name[3])), &hb_blob_destroy};
}

bool hasTable(hb_face_t* face, const char (&name)[5]) // NOLINT(modernize-avoid-c-arrays): as above
{
    return hb_blob_get_length(tableOf(face, name).get()) > 0;
}

// Bit 1 of the embedding rights: the font must not be put into documents.
bool mayBeEmbedded(hb_face_t* face)
{
    constexpr unsigned rightsOffset = 8;
    constexpr unsigned restricted = 0x0002;
    const BlobPtr table = tableOf(face, "OS/2");
    unsigned length = 0;
    const char* bytes = hb_blob_get_data(table.get(), &length);
    return length < rightsOffset + 2 || (qFromBigEndian<quint16>(bytes + rightsOffset) & restricted) == 0;
}

bool hasTrueTypeOutlines(hb_face_t* face)
{
    return hasTable(face, "glyf") && hasTable(face, "loca");
}

// A table that HarfBuzz cannot read has no glyphs for it.
bool hasPostScriptOutlines(hb_face_t* face)
{
    const std::unique_ptr<hb_font_t, decltype(&hb_font_destroy)> font(hb_font_create(face), &hb_font_destroy);
    hb_glyph_extents_t extents{};
    return hasTable(face, "CFF ") && hb_font_get_glyph_extents(font.get(), 0, &extents) != 0;
}

bool isUsable(hb_face_t* face)
{
    return hb_face_get_glyph_count(face) > 0 && hasTable(face, "head") && hasTable(face, "hhea") &&
           hasTable(face, "hmtx") && hasTable(face, "cmap") && mayBeEmbedded(face) &&
           (hasTrueTypeOutlines(face) || hasPostScriptOutlines(face));
}

} // namespace

std::unique_ptr<const FontFace> FontFace::load(const QString& path, unsigned index)
{
    const BlobPtr blob(hb_blob_create_from_file_or_fail(QFile::encodeName(path).constData()), &hb_blob_destroy);
    if (!blob || index >= hb_face_count(blob.get()))
        return nullptr;
    FacePtr face(hb_face_create(blob.get(), index), &hb_face_destroy);
    if (!isUsable(face.get()))
        return nullptr;
    return std::unique_ptr<const FontFace>(new FontFace(std::move(face), hb_face_count(blob.get()) > 1));
}

FontFace::FontFace(FacePtr face, bool isOneOfMany)
    : m_isOneOfMany(isOneOfMany)
    , m_face(std::move(face))
    , m_isPostScript(!hasTrueTypeOutlines(m_face.get()))
    , m_font(hb_font_create(m_face.get()), &hb_font_destroy)
    , m_unitsPerEm(hb_face_get_upem(m_face.get()))
{
    hb_font_extents_t extents{};
    hb_font_get_h_extents(m_font.get(), &extents);
    m_ascent = extents.ascender;
    m_descent = -extents.descender;
    m_lineHeight = m_ascent + m_descent + extents.line_gap;
    hb_font_make_immutable(m_font.get());
}

// The sum of a whole font file, in big-endian words, is a constant of its format.
bool FontFace::isIntact() const
{
    constexpr quint32 sumOfAllFiles = 0xB1B0AFBA;
    const QByteArray bytes = file();
    quint32 sum = 0;
    qsizetype i = 0;
    for (; i + 4 <= bytes.size(); i += 4)
        sum += qFromBigEndian<quint32>(bytes.constData() + i);
    for (int shift = 24; i < bytes.size(); ++i, shift -= 8)
        sum += quint32(uchar(bytes[i])) << unsigned(shift);
    return sum == sumOfAllFiles;
}

std::optional<hb_codepoint_t> FontFace::glyphOf(char32_t character) const
{
    hb_codepoint_t glyph = 0;
    if (!hb_font_get_nominal_glyph(m_font.get(), character, &glyph))
        return std::nullopt;
    // A font with a damaged outline among those that are shown cannot be cut.
    hb_glyph_extents_t extents{};
    if (m_isPostScript && !hb_font_get_glyph_extents(m_font.get(), glyph, &extents))
        return std::nullopt;
    return glyph;
}

double FontFace::advanceOf(hb_codepoint_t glyph) const
{
    return hb_font_get_glyph_h_advance(m_font.get(), glyph);
}

QByteArray FontFace::file() const
{
    if (!m_isOneOfMany) {
        const BlobPtr blob(hb_face_reference_blob(m_face.get()), &hb_blob_destroy);
        unsigned length = 0;
        const char* bytes = hb_blob_get_data(blob.get(), &length);
        return QByteArray::fromRawData(bytes, length);
    }

    const FacePtr alone(hb_face_builder_create(), &hb_face_destroy);
    std::array<hb_tag_t, 64> tags; // NOLINT(cppcoreguidelines-pro-type-member-init): it is written before it is read
    auto count = unsigned(tags.size());
    hb_face_get_table_tags(m_face.get(), 0, &count, tags.data());
    for (unsigned i = 0; i < count; ++i) {
        const BlobPtr table(hb_face_reference_table(m_face.get(), tags[i]), &hb_blob_destroy);
        hb_face_builder_add_table(alone.get(), tags[i], table.get());
    }
    const BlobPtr blob(hb_face_reference_blob(alone.get()), &hb_blob_destroy);
    unsigned length = 0;
    const char* bytes = hb_blob_get_data(blob.get(), &length);
    return {bytes, length};
}
