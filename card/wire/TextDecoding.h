#pragma once

#include <QString>

#include <optional>

// Strict conversions between bytes and text: absent when the encoding does not have one of the bytes or characters.

/// UTF-8 without its byte order mark. An incomplete last character is an error.
[[nodiscard]] std::optional<QString> decodeUtf8(QByteArrayView bytes);

/// ISO Latin 1 without the bytes 80 to 9F: in practice those are characters of another encoding.
[[nodiscard]] std::optional<QString> decodeLatin1(QByteArrayView bytes);

/// windows-1252, which does not have 81, 8D, 8F, 90 and 9D.
[[nodiscard]] std::optional<QString> decodeWindows1252(QByteArrayView bytes);

/// UTF-8, which does not have lone surrogates.
[[nodiscard]] std::optional<QByteArray> encodeUtf8(QStringView text);

/// windows-1252.
[[nodiscard]] std::optional<QByteArray> encodeWindows1252(QStringView text);
