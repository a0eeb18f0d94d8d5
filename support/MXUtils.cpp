#include "support/MXUtils.h"

#include "platform/NativePath.h"
#include "platform/PrivateFolder.h"
#include "support/MXLog.h"

#include <filesystem>
#include <system_error>

bool MXUtils::checkFolderAtPath(const QString& path, bool createIfNotExists)
{
    const std::filesystem::path native = bytesOfPath(path).toStdString();
    std::error_code error;
    if (std::filesystem::exists(native, error))
        return std::filesystem::is_directory(native, error);
    if (!createIfNotExists)
        return false;

    error = makePrivateFolder(native);
    if (error)
        MXLog::logError("Error on folder create '{}' : {}", path, error.message());
    return !error;
}
