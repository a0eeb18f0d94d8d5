#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <optional>
#include <system_error>

class QFile;
class QUrl;

/// The system's paths are bytes, mostly UTF-8; the program's are texts. A byte that is not UTF-8 becomes a lone
/// surrogate of its own, from U+DC80 to U+DCFF, so that bytesOfPath gives exactly the path that was there. Qt's own
/// functions put U+FFFD there and lose it. Any thread.
[[nodiscard]] QString pathFromBytes(QByteArrayView bytes);
[[nodiscard]] QByteArray bytesOfPath(QStringView path);

/// Opens a plain file for reading, never waiting for it; what is none, a folder or a pipe, is an invalid argument.
[[nodiscard]] std::error_code openPlainFile(QFile& file, QStringView path);

/// The local file that an address leads to, whatever bytes its name has; absent when it leads to none.
[[nodiscard]] std::optional<QString> pathOfUrl(const QUrl& url);
