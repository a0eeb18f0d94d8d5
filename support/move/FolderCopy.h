#pragma once

#include <QString>

#include <expected>

// Folders handled so that a program that is killed, or a machine that loses power, leaves them whole or not there at
// all. The failure is the reason, as the system words it. Usable on any thread.

/// Copies a folder with all that it holds: files, folders and symbolic links, with their permissions and times; its
/// owner may write to every copy. The destination, which must not exist, appears at once and whole, and is on the disk
/// by then.
[[nodiscard]] std::expected<void, QString> copyFolder(const QString& source, const QString& destination);

/// Removes a folder with all that it holds. One that cannot be taken out of the folder above it stays as it is.
[[nodiscard]] std::expected<void, QString> removeFolder(const QString& path);
