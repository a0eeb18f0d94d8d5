#pragma once

#include <QString>

#include <optional>
#include <system_error>

class QFile;
class QUrl;

/// Paths are bytes for the system and texts for the program. A byte that is not UTF-8 becomes a lone surrogate from
/// U+DC80 to U+DCFF, and bytesOfPath gives the same byte back. Qt's own functions replace it by U+FFFD. Any thread.
[[nodiscard]] QString pathFromBytes(QByteArrayView bytes);
[[nodiscard]] QByteArray bytesOfPath(QStringView path);

/// Opens a plain file for reading, without waiting. A folder or a pipe gives the error "invalid argument".
[[nodiscard]] std::error_code openPlainFile(QFile& file, QStringView path);

/// The local file of an address, whatever bytes are in its name; absent when the address is not one of a local file.
[[nodiscard]] std::optional<QString> pathOfUrl(const QUrl& url);
