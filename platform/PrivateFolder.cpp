#include "platform/PrivateFolder.h"

#include <cerrno>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// Without trailing slashes and dots, so that the last name is the folder's own.
fs::path withoutEmptyEnd(fs::path path)
{
    while (path.has_relative_path() && (path.filename().empty() || path.filename() == "."))
        path = path.parent_path();
    return path;
}

} // namespace

std::error_code makePrivateFolder(const fs::path& path)
{
    const fs::path folder = withoutEmptyEnd(path);
    std::error_code error;
    if (folder.has_parent_path())
        fs::create_directories(folder.parent_path(), error);
    if (error)
        return error;
    if (mkdir(folder.c_str(), S_IRWXU) != 0) {
        const std::error_code reason(errno, std::system_category());
        return fs::is_directory(folder, error) ? std::error_code() : reason;
    }
    // The umask may have removed permissions of the owner.
    fs::permissions(folder, fs::perms::owner_all, error);
    return error;
}
