#pragma once

#include <QString>
#include <QStringList>

// Folders with every kind of entry that an application has, and their lists.

/// Makes such a folder, which must not exist; false when that fails.
[[nodiscard]] bool makeFolderTree(const QString& path);

/// Each entry below a folder, with its kind, its permissions and its content, sorted.
[[nodiscard]] QStringList folderTreeOf(const QString& path);
