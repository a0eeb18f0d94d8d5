#pragma once

#include <QByteArrayView>

#include <expected>
#include <optional>
#include <span>
#include <vector>

/// A BER-TLV data object (ISO 7816-4). Its value points into the parsed bytes.
struct TlvObject
{
    quint32 tag = 0; // the number of the tag's bytes
    QByteArrayView value;
    std::vector<TlvObject> children; // of a constructed object
};

/// Why bytes are not a sequence of data objects.
enum class TlvFault
{
    TruncatedTag,
    OverlongTag, // more than three bytes, or leading zeros
    TruncatedLength,
    IndefiniteLength,
    OverlongLength, // more than four bytes after the first
    TruncatedValue,
    NestedTooDeep
};

/// Levels of nested objects, more than on any card.
inline constexpr int deepestTlv = 16;

/// Parses all objects with their children. Null bytes between objects, and bytes of 00 or FF after the last outer
/// object (erased memory), are skipped.
[[nodiscard]] std::expected<std::vector<TlvObject>, TlvFault> parseTlv(QByteArrayView bytes);

/// The tag at the start of the bytes.
[[nodiscard]] std::optional<quint32> leadingTlvTag(QByteArrayView bytes);

/// The tag of exactly these bytes.
[[nodiscard]] std::optional<quint32> tlvTag(QByteArrayView bytes);

/// Whether objects with this tag contain objects.
[[nodiscard]] bool isConstructedTag(quint32 tag);

/// All objects at a path of tags, outermost first, in their order.
[[nodiscard]] std::vector<const TlvObject*> findTlv(const std::vector<TlvObject>& objects,
                                                    std::span<const quint32> path);

/// The fault in French, for a log.
[[nodiscard]] QString describeTlvFault(TlvFault fault);
