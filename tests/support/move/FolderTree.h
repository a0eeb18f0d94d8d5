#pragma once

#include <QString>
#include <QStringList>

// Folders with a bit of everything that an application holds, and what is in them.

/// Makes such a folder, which must not exist; false when that fails.
[[nodiscard]] bool makeFolderTree(const QString& path);

/// Each entry below a folder, with its kind, its permissions and its content, sorted.
[[nodiscard]] QStringList folderTreeOf(const QString& path);

/// The names in a folder, hidden ones too.
[[nodiscard]] QStringList namesIn(const QString& folder);
