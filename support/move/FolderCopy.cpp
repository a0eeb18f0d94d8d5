#include "support/move/FolderCopy.h"

#include "platform/FileDescriptor.h"

#include <QFile>

#include <cerrno>
#include <filesystem>
#include <ranges>
#include <string>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <stdlib.h> // NOLINT(modernize-deprecated-headers): mkdtemp is POSIX's
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Result = std::expected<void, std::error_code>;

// Names of hidden temporary folders beside the folder in question. An interrupted run leaves them behind.
constexpr std::string_view copyPrefix = ".pelmora-copy-";
constexpr std::string_view removalPrefix = ".pelmora-removed-";

fs::path nativePath(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

Result resultOf(const std::error_code& error)
{
    return error ? Result(std::unexpected(error)) : Result();
}

Result lastResult(bool succeeded)
{
    return succeeded ? Result() : std::unexpected(std::error_code(errno, std::system_category()));
}

std::expected<void, QString> worded(const Result& result)
{
    if (result)
        return {};
    return std::unexpected(QString::fromStdString(result.error().message()));
}

// Makes an empty folder with a unique name.
std::expected<fs::path, std::error_code> temporaryFolder(const fs::path& parent, std::string_view prefix)
{
    std::string path = parent / (std::string(prefix) + "XXXXXX");
    if (mkdtemp(path.data()) == nullptr)
        return std::unexpected(std::error_code(errno, std::system_category()));
    return fs::path(path);
}

Result writeToDisk(const fs::path& path)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    return lastResult(file.isValid() && fsync(file.get()) == 0);
}

// Copies permissions and times, and lets the owner write: otherwise the copy could not be replaced later.
Result copyAttributes(const fs::path& source, const fs::path& copy)
{
    std::error_code error;
    const fs::file_status status = fs::status(source, error);
    if (!error)
        fs::permissions(copy, status.permissions() | fs::perms::owner_write, error);
    if (error)
        return std::unexpected(error);
    const fs::file_time_type time = fs::last_write_time(source, error);
    if (!error)
        fs::last_write_time(copy, time, error);
    return error ? std::unexpected(error) : writeToDisk(copy);
}

// Not std::filesystem::copy_file: it reports a full disk as "input/output error".
Result copyFile(const fs::path& source, const fs::path& copy)
{
    constexpr std::size_t atOnce = 1U << 20U;
    const FileDescriptor input(open(source.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!input.isValid())
        return lastResult(false);
    const FileDescriptor output(open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!output.isValid())
        return lastResult(false);
    ssize_t sent = 0;
    do
        sent = sendfile(output.get(), input.get(), nullptr, atOnce);
    while (sent > 0);
    return lastResult(sent == 0);
}

Result copyEntry(const fs::directory_entry& entry, const fs::path& copy)
{
    std::error_code error;
    switch (entry.symlink_status(error).type()) {
    case fs::file_type::symlink:
        fs::copy_symlink(entry.path(), copy, error);
        return resultOf(error);
    case fs::file_type::directory:
        fs::create_directory(copy, error);
        return resultOf(error);
    case fs::file_type::regular: {
        const Result copied = copyFile(entry.path(), copy);
        return copied ? copyAttributes(entry.path(), copy) : copied;
    }
    default:
        return std::unexpected(error ? error : std::make_error_code(std::errc::not_supported));
    }
}

Result copyContent(const fs::path& source, const fs::path& copy)
{
    std::error_code error;
    std::vector<fs::path> folders{fs::path()};
    const fs::recursive_directory_iterator end;
    for (fs::recursive_directory_iterator entry(source, error); !error && entry != end; entry.increment(error)) {
        const fs::path inside = entry->path().lexically_relative(source);
        if (Result result = copyEntry(*entry, copy / inside); !result)
            return result;
        if (entry->symlink_status(error).type() == fs::file_type::directory)
            folders.push_back(inside);
    }
    if (error)
        return std::unexpected(error);
    // Folders last, the deepest first: making entries changes their times, and their permissions may forbid it.
    for (const fs::path& folder : folders | std::views::reverse) {
        if (Result result = copyAttributes(source / folder, copy / folder); !result)
            return result;
    }
    return {};
}

// Locks a folder while it is copied to. Invalid when another process has the lock.
FileDescriptor lockFolder(const fs::path& folder)
{
    FileDescriptor lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (lock.isValid() && flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        lock.reset();
    return lock;
}

void removeWhatWasInterrupted(const fs::path& parent)
{
    std::error_code ignored;
    std::vector<fs::path> found;
    const fs::directory_iterator end;
    for (fs::directory_iterator entry(parent, ignored); !ignored && entry != end; entry.increment(ignored)) {
        if (entry->path().filename().native().starts_with(copyPrefix))
            found.push_back(entry->path());
    }
    for (const fs::path& path : found) {
        if (const FileDescriptor lock = lockFolder(path); lock.isValid())
            fs::remove_all(path, ignored);
    }
}

Result moveIntoPlace(const fs::path& copy, const fs::path& destination)
{
    std::error_code error;
    // rename() would replace an empty folder, which another program may just have made.
    if (fs::exists(fs::symlink_status(destination, error)))
        return std::unexpected(std::make_error_code(std::errc::file_exists));
    fs::rename(copy, destination, error);
    return error ? std::unexpected(error) : writeToDisk(destination.parent_path());
}

} // namespace

std::expected<void, QString> copyFolder(const QString& source, const QString& destination)
{
    const fs::path target = nativePath(destination);
    removeWhatWasInterrupted(target.parent_path());
    const std::expected<fs::path, std::error_code> copy = temporaryFolder(target.parent_path(), copyPrefix);
    if (!copy)
        return worded(std::unexpected(copy.error()));
    const FileDescriptor lock = lockFolder(*copy);
    Result result = lastResult(lock.isValid());
    if (result)
        result = copyContent(nativePath(source), *copy);
    if (result)
        result = moveIntoPlace(*copy, target);
    if (!result) {
        std::error_code ignored;
        fs::remove_all(*copy, ignored);
    }
    return worded(result);
}

std::expected<void, QString> removeFolder(const QString& path)
{
    const fs::path folder = nativePath(path);
    const std::expected<fs::path, std::error_code> removed = temporaryFolder(folder.parent_path(), removalPrefix);
    if (!removed)
        return worded(std::unexpected(removed.error()));
    std::error_code error;
    std::error_code ignored;
    fs::rename(folder, *removed, error);
    if (error) {
        fs::remove(*removed, ignored);
        return worded(std::unexpected(error));
    }
    fs::remove_all(*removed, error);
    // The rest gets its name back.
    if (error)
        fs::rename(*removed, folder, ignored);
    return worded(resultOf(error));
}
