#pragma once

#include <QString>

/// Small services of the file system.
class MXUtils final
{
public:
    MXUtils() = delete;

    /// Whether a usable folder is at the path afterwards. A missing one is made when asked, for its owner alone, with
    /// those above it, which have the usual rights; a failure to do so is logged. The path is used exactly as it is
    /// given.
    [[nodiscard]] static bool checkFolderAtPath(const QString& path, bool createIfNotExists);
};
