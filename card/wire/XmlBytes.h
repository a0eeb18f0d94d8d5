#pragma once

#include <QString>

#include <optional>

/// Decodes an XML text by its byte order mark, else by its XML declaration, else as UTF-8. Known are UTF-8, UTF-16,
/// ISO-8859-1, windows-1252 and US-ASCII. Absent for other encodings and for bytes that the encoding does not have.
[[nodiscard]] std::optional<QString> decodeXmlBytes(QByteArrayView bytes);
