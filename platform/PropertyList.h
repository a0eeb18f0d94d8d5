#pragma once

#include <QByteArray>
#include <QVariant>

#include <optional>

// Property lists in XML. A dictionary is a QVariantMap, an array a QVariantList, and their values are texts, booleans,
// integers of up to 64 bits, reals, dates (QDateTime, in UTC) and data (QByteArray). Usable on any thread.

/// Bytes beyond which a property list is not read.
inline constexpr qsizetype maximumPropertyListSize = qsizetype{1024} * 1024;

/// Reads a property list; nothing when it is not one, or is too large or nested too deep.
[[nodiscard]] std::optional<QVariant> parsePropertyList(const QByteArray& xml);

/// Writes a property list; nothing when a value in it is of another type. Characters that XML cannot hold become
/// U+FFFD.
[[nodiscard]] std::optional<QByteArray> writePropertyList(const QVariant& value);
