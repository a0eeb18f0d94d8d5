#pragma once

#include <QString>

class MXUtils final
{
public:
    MXUtils() = delete;

    /// Whether a folder exists at the path. A missing one is made on request, for its owner alone; missing folders
    /// above it get the usual permissions. A failure is logged. The path is used as it is.
    [[nodiscard]] static bool checkFolderAtPath(const QString& path, bool createIfNotExists);
};
