#include "support/MXUtils.h"

#include "support/MXLog.h"

#include <QFileInfo>

#include <filesystem>
#include <system_error>

bool MXUtils::checkFolderAtPath(const QString& path, bool createIfNotExists)
{
    const QFileInfo info(path);
    if (info.exists())
        return info.isDir();
    if (!createIfNotExists)
        return false;

    // QDir tells that it failed, not why.
    std::error_code error;
    std::filesystem::create_directories(path.toStdString(), error);
    if (error)
        MXLog::logError("Error on folder create '{}' : {}", path, error.message());
    return !error;
}
