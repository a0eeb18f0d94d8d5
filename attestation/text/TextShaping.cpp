#include "attestation/text/TextShaping.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fribidi.h>

namespace {

using BufferPtr = std::unique_ptr<hb_buffer_t, decltype(&hb_buffer_destroy)>;

/// A part of a line that is shaped at once: one face, one script, one direction.
struct Part
{
    qsizetype start = 0; // in the line, in UTF-32
    qsizetype length = 0;
    const FontFace* face = nullptr;
    hb_script_t script = HB_SCRIPT_COMMON;
    bool isRightToLeft = false;
};

bool belongsToAnyScript(hb_script_t script)
{
    return script == HB_SCRIPT_COMMON || script == HB_SCRIPT_INHERITED || script == HB_SCRIPT_UNKNOWN;
}

// The embedding level of each character; odd ones run from right to left.
std::vector<FriBidiLevel> levelsOf(const std::u32string& text)
{
    const auto length = FriBidiStrIndex(text.size());
    const std::vector<FriBidiChar> characters(text.begin(), text.end());
    std::vector<FriBidiCharType> types(text.size());
    std::vector<FriBidiBracketType> brackets(text.size());
    std::vector<FriBidiLevel> levels(text.size());
    fribidi_get_bidi_types(characters.data(), length, types.data());
    fribidi_get_bracket_types(characters.data(), length, types.data(), brackets.data());
    FriBidiParType direction = FRIBIDI_PAR_LTR;
    if (fribidi_get_par_embedding_levels_ex(types.data(), brackets.data(), length, &direction, levels.data()) == 0)
        std::ranges::fill(levels, FriBidiLevel(0)); // without memory for more
    return levels;
}

// The parts in the order of the text.
std::vector<Part> partsOf(const std::u32string& text, const std::vector<FriBidiLevel>& levels, const FontStack& faces)
{
    hb_unicode_funcs_t* unicode = hb_unicode_funcs_get_default();
    std::vector<Part> parts;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const hb_script_t script = hb_unicode_script(unicode, text[i]);
        const bool isMark = script == HB_SCRIPT_INHERITED;
        const bool isRightToLeft = (levels[i] & 1) != 0;
        Part* last = parts.empty() ? nullptr : &parts.back();
        const FontFace* face = faces.faceFor(text[i]);
        // A mark and what stands by any letter stay with what is before them, where its face has them.
        if (last != nullptr && (isMark || belongsToAnyScript(script)) && last->face->glyphOf(text[i]))
            face = last->face;
        if (face == nullptr)
            face = &faces.own();
        const bool continues =
            last != nullptr && last->face == face && last->isRightToLeft == isRightToLeft &&
            (last->script == script || belongsToAnyScript(script) || belongsToAnyScript(last->script));
        if (!continues) {
            parts.push_back({qsizetype(i), 1, face, script, isRightToLeft});
            continue;
        }
        ++last->length;
        if (belongsToAnyScript(last->script))
            last->script = script;
    }
    return parts;
}

// The parts from left to right, by the rule that reverses the runs of each level, from the highest to the lowest odd
// one.
void putInVisualOrder(std::vector<Part>& parts, const std::vector<FriBidiLevel>& levels)
{
    const auto levelOf = [&levels](const Part& part) { return int(levels[std::size_t(part.start)]); };
    int highest = 0;
    for (const Part& part : parts)
        highest = std::max(highest, levelOf(part));
    for (int level = highest; level > 0; --level) {
        const auto isInside = [&](const Part& part) { return levelOf(part) >= level; };
        for (auto begin = std::ranges::find_if(parts, isInside); begin != parts.end();) {
            const auto end = std::find_if_not(begin, parts.end(), isInside);
            std::reverse(begin, end);
            begin = std::find_if(end, parts.end(), isInside);
        }
    }
}

/// Puts glyphs one after the other.
class Pen
{
public:
    Pen(const PageFont& font, const std::u32string& text)
        : m_font(font)
        , m_starts(text.size() + 1)
    {
        for (std::size_t i = 0; i < text.size(); ++i)
            m_starts[i + 1] = m_starts[i] + (QChar::requiresSurrogates(text[i]) ? 2 : 1);
    }

    void write(const Part& part, const std::u32string& text)
    {
        const BufferPtr buffer(hb_buffer_create(), &hb_buffer_destroy);
        hb_buffer_add_utf32(buffer.get(), reinterpret_cast<const uint32_t*>(text.data()), int(text.size()),
                            unsigned(part.start), int(part.length));
        hb_buffer_set_direction(buffer.get(), part.isRightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
        hb_buffer_set_script(buffer.get(), part.script);
        hb_buffer_set_language(buffer.get(), hb_language_from_string("fr", -1));
        hb_buffer_set_cluster_level(buffer.get(), HB_BUFFER_CLUSTER_LEVEL_MONOTONE_CHARACTERS);
        hb_shape(part.face->font(), buffer.get(), withoutLigatures.data(), unsigned(withoutLigatures.size()));
        take(part, buffer.get());
    }

    [[nodiscard]] ShapedText text() && { return std::move(m_text); }

private:
    // Those that a reader can do without spoil the text that is read back.
    static constexpr std::array withoutLigatures{
        hb_feature_t{HB_TAG('l', 'i', 'g', 'a'), 0, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END},
        hb_feature_t{HB_TAG('c', 'l', 'i', 'g'), 0, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END},
        hb_feature_t{HB_TAG('k', 'e', 'r', 'n'), 0, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END}};

    void take(const Part& part, hb_buffer_t* buffer)
    {
        unsigned count = 0;
        const hb_glyph_info_t* infos = hb_buffer_get_glyph_infos(buffer, &count);
        const hb_glyph_position_t* positions = hb_buffer_get_glyph_positions(buffer, &count);
        if (count == 0)
            return;
        const double scale = m_font.scaleOf(*part.face);
        GlyphRun& run = m_text.runs.emplace_back(GlyphRun{.face = part.face, .glyphs = {}});
        run.glyphs.reserve(count);
        for (unsigned i = 0; i < count; ++i) {
            const auto [start, length] = textOf(part, infos, count, i);
            const double advance = positions[i].x_advance * scale;
            const QPointF offset(positions[i].x_offset * scale, -positions[i].y_offset * scale);
            run.glyphs.push_back({infos[i].codepoint, offset + QPointF(m_text.width, 0), advance, start, length});
            m_text.width += advance;
        }
    }

    // A glyph stands for the characters from its cluster's to the next one's, in the order of the text.
    [[nodiscard]] std::pair<qsizetype, qsizetype> textOf(const Part& part, const hb_glyph_info_t* infos, unsigned count,
                                                         unsigned i) const
    {
        const unsigned cluster = infos[i].cluster;
        auto end = std::size_t(part.start + part.length);
        // The first glyph in the order of the text has the whole of it.
        bool isFirst = true;
        if (part.isRightToLeft) {
            isFirst = i + 1 == count || infos[i + 1].cluster != cluster;
            for (unsigned k = i; k > 0 && end == std::size_t(part.start + part.length); --k) {
                if (infos[k - 1].cluster != cluster)
                    end = infos[k - 1].cluster;
            }
        } else {
            isFirst = i == 0 || infos[i - 1].cluster != cluster;
            const auto* next = std::find_if(infos + i, infos + count,
                                            [cluster](const hb_glyph_info_t& info) { return info.cluster != cluster; });
            if (next != infos + count)
                end = next->cluster;
        }
        const qsizetype start = m_starts[cluster];
        return {start, isFirst ? m_starts[end] - start : 0};
    }

    const PageFont& m_font;
    std::vector<qsizetype> m_starts; // of each character, in UTF-16
    ShapedText m_text;
};

ShapedText shapedPlainText(QStringView line, const PageFont& font)
{
    const FontFace& face = font.faces->own();
    const double scale = font.scaleOf(face);
    ShapedText shaped;
    if (line.isEmpty())
        return shaped;
    GlyphRun& run = shaped.runs.emplace_back(GlyphRun{.face = &face, .glyphs = {}});
    run.glyphs.reserve(std::size_t(line.size()));
    for (qsizetype i = 0; i < line.size(); ++i) {
        const hb_codepoint_t glyph = face.glyphOf(line[i].unicode()).value_or(0);
        const double advance = face.advanceOf(glyph) * scale;
        run.glyphs.push_back({glyph, {shaped.width, 0}, advance, i, 1});
        shaped.width += advance;
    }
    return shaped;
}

} // namespace

bool isPlainText(QStringView text)
{
    return std::ranges::all_of(text, [](QChar character) {
        const char16_t code = character.unicode();
        return (code >= 0x20 && code < 0x7f) || (code >= 0xa0 && code < 0x180 && code != QChar::SoftHyphen);
    });
}

ShapedText shapedText(QStringView line, const PageFont& font)
{
    if (isPlainText(line))
        return shapedPlainText(line, font);
    const std::u32string text = line.toString().toStdU32String();
    const std::vector<FriBidiLevel> levels = levelsOf(text);
    std::vector<Part> parts = partsOf(text, levels, *font.faces);
    putInVisualOrder(parts, levels);
    Pen pen(font, text);
    for (const Part& part : parts)
        pen.write(part, text);
    return std::move(pen).text();
}

double widthOfText(QStringView line, const PageFont& font)
{
    if (!isPlainText(line))
        return shapedText(line, font).width;
    const FontFace& face = font.faces->own();
    double units = 0;
    for (const QChar character : line)
        units += face.advanceOf(face.glyphOf(character.unicode()).value_or(0));
    return units * font.scaleOf(face);
}
