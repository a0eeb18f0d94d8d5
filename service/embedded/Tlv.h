#pragma once

#include <QByteArrayView>

#include <expected>
#include <optional>
#include <span>
#include <vector>

/// A data object of BER-TLV as ISO 7816-4 uses it. Its value is a view into the bytes that were parsed.
struct TlvObject
{
    quint32 tag = 0; // the number that the tag's bytes make
    QByteArrayView value;
    std::vector<TlvObject> children; // those of a constructed object
};

/// Why bytes are no sequence of data objects.
enum class TlvFault
{
    TruncatedTag,
    OverlongTag, // more than three bytes, or a number with zeros in front
    TruncatedLength,
    IndefiniteLength,
    OverlongLength, // more than four bytes after the first
    TruncatedValue,
    NestedTooDeep
};

/// Objects within objects, beyond which no card's are.
inline constexpr int deepestTlv = 16;

/// The objects that the bytes are made of, down to the innermost. Null bytes between objects, and bytes of 00 or FF
/// after the last of the outermost ones, are what erased memory looks like, and are passed over.
[[nodiscard]] std::expected<std::vector<TlvObject>, TlvFault> parseTlv(QByteArrayView bytes);

/// The tag that the bytes begin with.
[[nodiscard]] std::optional<quint32> leadingTlvTag(QByteArrayView bytes);

/// The tag that exactly these bytes make.
[[nodiscard]] std::optional<quint32> tlvTag(QByteArrayView bytes);

/// Whether an object of this tag is made of objects.
[[nodiscard]] bool isConstructedTag(quint32 tag);

/// All objects at the end of a path of tags, the outermost one first, in their order.
[[nodiscard]] std::vector<const TlvObject*> findTlv(const std::vector<TlvObject>& objects,
                                                    std::span<const quint32> path);

/// What the fault is, in French, for a log.
[[nodiscard]] QString describeTlvFault(TlvFault fault);
