#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

// From bytes to text and back, strictly: nothing when the encoding lacks one of the bytes or of the characters.

/// UTF-8, without the byte order mark that it may start with. A last character that is cut short is an error too.
[[nodiscard]] std::optional<QString> decodeUtf8(QByteArrayView bytes);

/// ISO Latin 1 without bytes 80 to 9F, which in a text are another encoding's letters and not the controls they stand
/// for.
[[nodiscard]] std::optional<QString> decodeLatin1(QByteArrayView bytes);

/// windows-1252, which lacks 81, 8D, 8F, 90 and 9D.
[[nodiscard]] std::optional<QString> decodeWindows1252(QByteArrayView bytes);

/// UTF-8, which lacks halves of surrogate pairs.
[[nodiscard]] std::optional<QByteArray> encodeUtf8(QStringView text);

/// windows-1252.
[[nodiscard]] std::optional<QByteArray> encodeWindows1252(QStringView text);
