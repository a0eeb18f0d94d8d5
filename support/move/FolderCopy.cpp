#include "support/move/FolderCopy.h"

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

// What an interrupted run leaves bears these names, hidden, beside what it worked on.
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

// An empty folder of a name that nobody else has.
std::expected<fs::path, std::error_code> temporaryFolder(const fs::path& parent, std::string_view prefix)
{
    std::string path = parent / (std::string(prefix) + "XXXXXX");
    if (mkdtemp(path.data()) == nullptr)
        return std::unexpected(std::error_code(errno, std::system_category()));
    return fs::path(path);
}

Result writeToDisk(const fs::path& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0)
        return lastResult(false);
    const Result result = lastResult(fsync(file) == 0);
    close(file);
    return result;
}

// Permissions and times of the source, and its owner may write: what cannot be written to cannot be replaced later.
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

// The library's own copy gives no reason but "input/output error" when the disk is full.
Result copyFile(const fs::path& source, const fs::path& copy)
{
    constexpr std::size_t atOnce = 1U << 20U;
    const int input = open(source.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (input < 0)
        return lastResult(false);
    const int output = open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    Result result = lastResult(output >= 0);
    if (result) {
        ssize_t sent = 0;
        do
            sent = sendfile(output, input, nullptr, atOnce);
        while (sent > 0);
        result = lastResult(sent == 0);
        close(output);
    }
    close(input);
    return result;
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
    // Folders last, the deepest first: what is made in them changes their times, and their permissions may forbid it.
    for (const fs::path& folder : folders | std::views::reverse) {
        if (Result result = copyAttributes(source / folder, copy / folder); !result)
            return result;
    }
    return {};
}

// A copy in the making is locked by who makes it: what nobody holds was interrupted. The lock ends with its number,
// which is negative when another one has it.
int lockFolder(const fs::path& folder)
{
    const int lock = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        close(lock);
        return -1;
    }
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
        const int lock = lockFolder(path);
        if (lock < 0)
            continue;
        fs::remove_all(path, ignored);
        close(lock);
    }
}

Result moveIntoPlace(const fs::path& copy, const fs::path& destination)
{
    std::error_code error;
    // A folder may replace an empty one, which somebody may just have made.
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
    const int lock = lockFolder(*copy);
    Result result = lastResult(lock >= 0);
    if (result)
        result = copyContent(nativePath(source), *copy);
    if (result)
        result = moveIntoPlace(*copy, target);
    if (!result) {
        std::error_code ignored;
        fs::remove_all(*copy, ignored);
    }
    if (lock >= 0)
        close(lock);
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
    // What is left gets its name back.
    if (error)
        fs::rename(*removed, folder, ignored);
    return worded(resultOf(error));
}
