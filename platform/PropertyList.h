#pragma once

#include <QVariant>

#include <optional>

// Property lists in XML. A dictionary is a QVariantMap, an array a QVariantList. Values are texts, booleans, integers
// of up to 64 bits, reals, dates (QDateTime, in UTC) and data (QByteArray). Any thread.

/// Reads a property list; absent when it is not one, is too large or is nested too deep.
[[nodiscard]] std::optional<QVariant> parsePropertyList(const QByteArray& xml);

/// The dictionary in a property list file; absent when the file cannot be read or holds something else.
[[nodiscard]] std::optional<QVariantMap> dictionaryInFile(const QString& path);

/// Writes a property list; absent for values of other types. Invalid XML characters become U+FFFD.
[[nodiscard]] std::optional<QByteArray> writePropertyList(const QVariant& value);
