#pragma once

#include <QString>

#include <expected>

// Copies and removes folders so that after a crash or a power failure a folder is either complete or not there. The
// failure is the system's text. Any thread.

/// Copies a folder with its files, folders and symbolic links, their permissions and times. The owner may write to
/// every copy. The destination must not exist; it appears complete, and is on the disk then.
[[nodiscard]] std::expected<void, QString> copyFolder(const QString& source, const QString& destination);

/// Removes a folder with its content. Nothing is removed when the folder cannot be renamed.
[[nodiscard]] std::expected<void, QString> removeFolder(const QString& path);
