#include "service/embedded/Tlv.h"

#include <QString>

#include <algorithm>
#include <array>

namespace {

constexpr quint8 constructedBit = 0x20;
constexpr quint8 longTagBits = 0x1F;
constexpr quint8 continuationBit = 0x80;
constexpr quint8 longLengthBit = 0x80;
constexpr int longestTag = 3;
constexpr int longestLength = 4;

class TlvCursor
{
public:
    explicit TlvCursor(QByteArrayView bytes)
        : m_rest(bytes)
    {
    }

    [[nodiscard]] bool atEnd() const { return m_rest.isEmpty(); }
    [[nodiscard]] quint8 next() const { return static_cast<quint8>(m_rest.front()); }

    void skipNulls()
    {
        while (!atEnd() && next() == 0)
            m_rest = m_rest.sliced(1);
    }

    [[nodiscard]] bool isErased() const
    {
        return std::ranges::all_of(m_rest, [](char byte) { return byte == '\0' || byte == '\xFF'; });
    }

    std::expected<quint32, TlvFault> takeTag()
    {
        quint32 tag = take();
        if ((tag & longTagBits) != longTagBits)
            return tag;
        for (int count = 2; count <= longestTag; ++count) {
            if (atEnd())
                return std::unexpected(TlvFault::TruncatedTag);
            const quint8 byte = take();
            // A number with leading zeros. Small numbers, which would fit into the first byte, do occur on cards.
            if (count == 2 && byte == continuationBit)
                return std::unexpected(TlvFault::OverlongTag);
            tag = tag << 8U | byte;
            if ((byte & continuationBit) == 0)
                return tag;
        }
        return std::unexpected(TlvFault::OverlongTag);
    }

    std::expected<QByteArrayView, TlvFault> takeValue()
    {
        if (atEnd())
            return std::unexpected(TlvFault::TruncatedLength);
        quint64 length = take();
        if (length == longLengthBit)
            return std::unexpected(TlvFault::IndefiniteLength);
        if (length > longLengthBit) {
            const quint64 count = length - longLengthBit;
            if (count > longestLength)
                return std::unexpected(TlvFault::OverlongLength);
            if (count > static_cast<quint64>(m_rest.size()))
                return std::unexpected(TlvFault::TruncatedLength);
            length = 0;
            for (quint64 byte = 0; byte < count; ++byte)
                length = length << 8U | take();
        }
        if (length > static_cast<quint64>(m_rest.size()))
            return std::unexpected(TlvFault::TruncatedValue);
        const auto size = static_cast<qsizetype>(length);
        const QByteArrayView value = m_rest.first(size);
        m_rest = m_rest.sliced(size);
        return value;
    }

private:
    quint8 take()
    {
        const quint8 byte = next();
        m_rest = m_rest.sliced(1);
        return byte;
    }

    QByteArrayView m_rest;
};

// The depth is limited by deepestTlv.
std::expected<std::vector<TlvObject>, TlvFault> parseLevel(QByteArrayView bytes, int depth)
{
    if (depth > deepestTlv)
        return std::unexpected(TlvFault::NestedTooDeep);
    std::vector<TlvObject> objects;
    TlvCursor cursor(bytes);
    for (cursor.skipNulls(); !cursor.atEnd(); cursor.skipNulls()) {
        if (depth == 1 && cursor.isErased())
            break;
        const std::expected<quint32, TlvFault> tag = cursor.takeTag();
        if (!tag)
            return std::unexpected(tag.error());
        const std::expected<QByteArrayView, TlvFault> value = cursor.takeValue();
        if (!value)
            return std::unexpected(value.error());
        TlvObject object{*tag, *value, {}};
        if (isConstructedTag(*tag)) {
            std::expected<std::vector<TlvObject>, TlvFault> children = parseLevel(*value, depth + 1);
            if (!children)
                return children;
            object.children = *std::move(children);
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

} // namespace

std::expected<std::vector<TlvObject>, TlvFault> parseTlv(QByteArrayView bytes)
{
    return parseLevel(bytes, 1);
}

std::optional<quint32> leadingTlvTag(QByteArrayView bytes)
{
    if (bytes.isEmpty() || bytes.front() == '\0')
        return std::nullopt;
    const std::expected<quint32, TlvFault> tag = TlvCursor(bytes).takeTag();
    return tag ? std::optional(*tag) : std::nullopt;
}

std::optional<quint32> tlvTag(QByteArrayView bytes)
{
    if (bytes.isEmpty() || bytes.front() == '\0')
        return std::nullopt;
    TlvCursor cursor(bytes);
    const std::expected<quint32, TlvFault> tag = cursor.takeTag();
    return tag && cursor.atEnd() ? std::optional(*tag) : std::nullopt;
}

bool isConstructedTag(quint32 tag)
{
    quint32 first = tag;
    while (first > 0xFF)
        first >>= 8U;
    return (first & constructedBit) != 0;
}

// The depth is limited by a map's paths, which are shorter than deepestTlv.
std::vector<const TlvObject*> findTlv(const std::vector<TlvObject>& objects, std::span<const quint32> path)
{
    std::vector<const TlvObject*> found;
    for (const TlvObject& object : objects) {
        if (path.empty() || object.tag != path.front())
            continue;
        if (path.size() == 1)
            found.push_back(&object);
        else
            std::ranges::copy(findTlv(object.children, path.subspan(1)), std::back_inserter(found));
    }
    return found;
}

QString describeTlvFault(TlvFault fault)
{
    struct Description
    {
        TlvFault fault = {};
        QStringView text;
    };
    static constexpr std::array descriptions{
        Description{TlvFault::TruncatedTag, u"étiquette tronquée"},
        Description{TlvFault::OverlongTag, u"étiquette trop longue"},
        Description{TlvFault::TruncatedLength, u"longueur tronquée"},
        Description{TlvFault::IndefiniteLength, u"longueur indéfinie"},
        Description{TlvFault::OverlongLength, u"longueur trop longue"},
        Description{TlvFault::TruncatedValue, u"valeur tronquée"},
        Description{TlvFault::NestedTooDeep, u"objets trop imbriqués"},
    };
    return std::ranges::find(descriptions, fault, &Description::fault)->text.toString();
}
