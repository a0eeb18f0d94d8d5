#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The content of a file; "(unreadable)" when it cannot be read.
[[nodiscard]] QByteArray contentOf(const QString& path);
/// The same as a text in UTF-8.
[[nodiscard]] QString textOfFile(const QString& path);

/// Writes a file or replaces it, and makes missing parent folders. False when that fails.
[[nodiscard]] bool writeFile(const QString& path, const QByteArray& content);

/// The names of everything in a folder, hidden or not, sorted.
[[nodiscard]] QStringList namesIn(const QString& folder);

/// The permissions of a file or folder, without its type; 0 when it does not exist.
[[nodiscard]] unsigned modeOf(const QString& path);
