#include "attestation/document/CffTable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>

namespace {

// Operators of dictionaries. Of those that have two bytes, the first is 12.
enum CffOperator : unsigned
{
    FontBBox = 5,
    Charset = 15,
    CharStrings = 17,
    Private = 18,
    Subrs = 19,
    PaintType = 0x0c05,
    CharstringType = 0x0c06,
    FontMatrix = 0x0c07,
    StrokeWidth = 0x0c08,
    Ros = 0x0c1e,
    CidCount = 0x0c22,
    FdArray = 0x0c24,
    FdSelect = 0x0c25
};

/// An operator of a dictionary with its operands as they are written.
struct DictEntry
{
    unsigned key = 0;
    std::string_view operands;
    std::array<std::uint32_t, 2> numbers{}; ///< the last two operands, where these are sizes or places
};
using Dict = std::vector<DictEntry>;

std::uint32_t bigEndian(std::string_view bytes)
{
    std::uint32_t value = 0;
    for (const char byte : bytes)
        value = value << 8U | std::uint8_t(byte);
    return value;
}

/// Takes what follows a place in a table. What is missing at its end is empty, and makes the reader invalid.
class CffReader
{
public:
    explicit CffReader(std::string_view table, std::size_t place = 0)
        : m_bytes(table.substr(std::min(place, table.size())))
    {
    }

    [[nodiscard]] bool isValid() const { return m_isValid; }
    [[nodiscard]] std::size_t left() const { return m_bytes.size(); }

    std::string_view take(std::size_t size)
    {
        m_isValid = m_isValid && size <= m_bytes.size();
        const std::string_view taken = m_bytes.substr(0, m_isValid ? size : 0);
        m_bytes.remove_prefix(m_isValid ? size : m_bytes.size());
        return taken;
    }

    std::uint32_t number(std::size_t size) { return bigEndian(take(size)); }

    /// A list of objects, an INDEX; empty when it is damaged.
    std::vector<std::string_view> index()
    {
        const std::size_t count = number(2);
        if (count == 0)
            return {};
        const std::size_t size = number(1);
        const std::string_view offsets = take((count + 1) * size);
        std::vector<std::string_view> objects;
        // The first offset is 1, and each other is where an object ends and the next one begins.
        std::uint32_t begin = 1;
        for (std::size_t i = 1; i <= count && m_isValid; ++i) {
            const std::uint32_t end = bigEndian(offsets.substr(i * size, size));
            objects.push_back(take(std::size_t(end) - begin));
            begin = end;
        }
        return m_isValid ? objects : std::vector<std::string_view>();
    }

private:
    std::string_view m_bytes;
    bool m_isValid = true;
};

Dict dictOf(std::string_view bytes)
{
    Dict dict;
    DictEntry entry;
    std::size_t start = 0;
    const auto add = [&entry](std::uint32_t number) { entry.numbers = {entry.numbers[1], number}; };
    for (CffReader reader(bytes); reader.left() > 0;) {
        const std::size_t place = bytes.size() - reader.left();
        const std::uint32_t byte = reader.number(1);
        if (byte < 22) {
            entry.key = byte == 12 ? byte << 8U | reader.number(1) : byte;
            entry.operands = bytes.substr(start, place - start);
            dict.push_back(entry);
            entry = {};
            start = bytes.size() - reader.left();
        } else if (byte == 28 || byte == 29) {
            add(reader.number(byte == 28 ? 2 : 4));
        } else if (byte == 30) { // a real number, whose last four bits are set
            while (reader.left() > 0 && (reader.number(1) & 0xfU) != 0xf)
                continue;
        } else if (byte >= 247) { // from 251 on it is negative, which no size and no place is
            add((byte - 247) * 256 + reader.number(1) + 108);
        } else if (byte >= 32) {
            add(byte - 139);
        }
    }
    return dict;
}

DictEntry entryOf(const Dict& dict, CffOperator key)
{
    const auto found = std::ranges::find(dict, unsigned(key), &DictEntry::key);
    return found == dict.end() ? DictEntry() : *found;
}

/// What a new table takes from an old one.
struct CffFont
{
    std::string_view name;
    Dict top;
    bool isCidKeyed = false;
    std::vector<std::string_view> glyphs;
    // Glyphs of one kind share a dictionary. A font whose glyphs have names has one kind, told by its top dictionary.
    std::vector<Dict> kinds;
    std::vector<Dict> privates;       // of each kind
    std::vector<std::uint8_t> kindOf; // of each glyph
};

// The kind of each glyph, for glyph after glyph or in ranges; empty when it is damaged.
std::vector<std::uint8_t> kindsIn(CffReader reader, std::size_t glyphCount)
{
    std::vector<std::uint8_t> kinds(glyphCount);
    if (reader.number(1) == 0) {
        for (std::uint8_t& kind : kinds)
            kind = std::uint8_t(reader.number(1));
    } else {
        const std::uint32_t ranges = reader.number(2);
        std::size_t begin = reader.number(2);
        for (std::uint32_t i = 0; i < ranges && reader.isValid(); ++i) {
            const auto kind = std::uint8_t(reader.number(1));
            for (const std::size_t end = reader.number(2); begin < std::min(end, glyphCount); ++begin)
                kinds[begin] = kind;
        }
    }
    return reader.isValid() ? kinds : std::vector<std::uint8_t>();
}

std::optional<CffFont> fontIn(std::string_view table)
{
    const auto readerFor = [table](const Dict& dict, CffOperator key) {
        return CffReader(table, entryOf(dict, key).numbers[1]);
    };
    constexpr std::size_t headerSizePlace = 2;
    CffReader reader(table, CffReader(table, headerSizePlace).number(1));
    const std::vector<std::string_view> names = reader.index();
    const std::vector<std::string_view> tops = reader.index();
    if (names.empty() || tops.empty())
        return std::nullopt;
    CffFont font;
    font.name = names[0];
    font.top = dictOf(tops[0]);
    font.isCidKeyed = entryOf(font.top, Ros).key != 0;
    font.glyphs = readerFor(font.top, CharStrings).index();
    if (font.isCidKeyed) {
        std::ranges::transform(readerFor(font.top, FdArray).index(), std::back_inserter(font.kinds), dictOf);
        font.kindOf = kindsIn(readerFor(font.top, FdSelect), font.glyphs.size());
    } else {
        font.kinds = {font.top};
        font.kindOf.resize(font.glyphs.size());
    }
    bool isWhole = reader.isValid() && !font.glyphs.empty() && !font.kindOf.empty();
    for (const Dict& kind : font.kinds) {
        const auto [size, place] = entryOf(kind, Private).numbers;
        CffReader privateReader(table, place);
        font.privates.push_back(dictOf(privateReader.take(size)));
        isWhole = isWhole && privateReader.isValid();
    }
    isWhole = isWhole && std::ranges::max(font.kindOf) < font.kinds.size();
    return isWhole ? std::optional(std::move(font)) : std::nullopt;
}

std::string bytesOf(std::size_t value, unsigned size)
{
    std::string bytes;
    for (unsigned i = size; i > 0; --i)
        bytes += char(value >> (8 * (i - 1)));
    return bytes;
}

std::string keyBytes(unsigned key)
{
    return bytesOf(key, key > 0xff ? 2 : 1);
}

// An operator with numbers, each in five bytes, so that a dictionary's size is known before its numbers are.
std::string entry(CffOperator key, std::initializer_list<std::size_t> numbers)
{
    std::string bytes;
    for (const std::size_t number : numbers)
        bytes += '\x1d' + bytesOf(number, 4);
    return bytes + keyBytes(key);
}

std::string copied(const Dict& dict, std::initializer_list<CffOperator> keys)
{
    std::string bytes;
    for (const CffOperator key : keys) {
        if (const DictEntry found = entryOf(dict, key); found.key != 0)
            bytes += std::string(found.operands) + keyBytes(key);
    }
    return bytes;
}

std::string indexOf(const std::vector<std::string>& objects)
{
    std::string offsets = bytesOf(objects.size(), 2) + '\x04';
    std::string bytes;
    for (const std::string& object : objects) {
        offsets += bytesOf(bytes.size() + 1, 4);
        bytes += object;
    }
    return offsets + bytesOf(bytes.size() + 1, 4) + bytes;
}

// The dictionaries of the kinds, whose private ones follow each other from a place on.
std::string kindsIndex(const CffFont& font, const std::vector<std::string>& privates, std::size_t place)
{
    std::vector<std::string> dicts;
    for (std::size_t i = 0; i < font.kinds.size(); ++i) {
        dicts.push_back(copied(font.kinds[i], {FontMatrix}) + entry(Private, {privates[i].size(), place}));
        place += privates[i].size();
    }
    return indexOf(dicts);
}

std::string topIndex(const CffFont& font, std::size_t glyphCount, const std::array<std::size_t, 4>& places)
{
    // The names of the collection are the first strings after those that every font has.
    constexpr std::size_t ownStrings = 391;
    return indexOf({entry(Ros, {ownStrings, ownStrings + 1, 0}) +
                    copied(font.top, {FontBBox, PaintType, CharstringType, StrokeWidth}) +
                    (font.isCidKeyed ? copied(font.top, {FontMatrix}) : std::string()) + entry(CidCount, {glyphCount}) +
                    entry(Charset, {places[0]}) + entry(FdSelect, {places[1]}) + entry(CharStrings, {places[2]}) +
                    entry(FdArray, {places[3]})});
}

} // namespace

std::optional<std::string> cffTableWithGlyphs(std::string_view table, const std::vector<unsigned>& glyphs)
{
    const std::optional<CffFont> font = fontIn(table);
    if (!font)
        return std::nullopt;

    std::string charset(1, '\0'); // the format with a number for each glyph but the first
    std::string kinds(1, '\0');   // the format with a kind for each glyph
    std::vector<std::string> outlines;
    for (std::size_t cid = 0; cid < glyphs.size(); ++cid) {
        const std::size_t glyph = glyphs[cid] < font->glyphs.size() ? glyphs[cid] : 0;
        if (cid > 0)
            charset += bytesOf(cid, 2);
        kinds += char(font->kindOf[glyph]);
        outlines.emplace_back(font->glyphs[glyph]);
    }
    std::vector<std::string> privates;
    for (const Dict& dict : font->privates) {
        std::string& bytes = privates.emplace_back();
        for (const DictEntry& found : dict) {
            if (found.key != Subrs)
                bytes += std::string(found.operands) + keyBytes(found.key);
        }
    }

    const std::string start = std::string("\1\0\4\4", 4) + indexOf({std::string(font->name)});
    const std::string noSubroutines(2, '\0');
    const std::string strings = indexOf({"Adobe", "Identity"}) + noSubroutines;
    const std::string outlinesIndex = indexOf(outlines);
    std::array<std::size_t, 4> places{};
    places[0] = start.size() + topIndex(*font, glyphs.size(), places).size() + strings.size();
    places[1] = places[0] + charset.size();
    places[2] = places[1] + kinds.size();
    places[3] = places[2] + outlinesIndex.size();
    std::string made = start + topIndex(*font, glyphs.size(), places) + strings + charset + kinds + outlinesIndex;
    made += kindsIndex(*font, privates, places[3] + kindsIndex(*font, privates, 0).size());
    for (const std::string& dict : privates)
        made += dict;
    return made;
}
