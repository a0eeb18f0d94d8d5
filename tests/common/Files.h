#pragma once

#include <QByteArray>
#include <QString>

/// What a file holds; "(unreadable)" when it cannot be read.
[[nodiscard]] QByteArray contentOf(const QString& path);
/// The same as a text in UTF-8.
[[nodiscard]] QString textOfFile(const QString& path);

/// Writes a file, over an older one, and makes the folders above it that are missing. False when that fails.
[[nodiscard]] bool writeFile(const QString& path, const QByteArray& content);

/// The permissions of a file or folder, without its type; 0 when there is none.
[[nodiscard]] unsigned modeOf(const QString& path);
