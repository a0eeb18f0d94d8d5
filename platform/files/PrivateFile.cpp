#include "platform/files/PrivateFile.h"

#include "platform/FileDescriptor.h"
#include "platform/NativePath.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// The temporary name does not contain the file's name: that may have the maximum length already.
constexpr std::string_view temporaryPrefix = ".pelmora-";
constexpr std::size_t randomLength = 6;
constexpr std::string_view randomCharacters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

// Attempts to find a free name, or to finish while another machine, without our locks, removes files.
constexpr int maximumAttempts = 100;

constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

struct CloseFolder
{
    void operator()(DIR* folder) const { closedir(folder); }
};

// A path to the open file or folder, even after it was renamed.
std::string pathOf(const FileDescriptor& file)
{
    return "/proc/self/fd/" + std::to_string(file.get());
}

std::error_code errorWhere(bool failed)
{
    return failed ? std::error_code(errno, std::system_category()) : std::error_code();
}

std::string temporaryName()
{
    std::random_device random;
    std::uniform_int_distribution<std::size_t> index(0, randomCharacters.size() - 1);
    std::string name(temporaryPrefix);
    for (std::size_t count = 0; count < randomLength; ++count)
        name += randomCharacters[index(random)];
    return name;
}

bool isTemporaryName(std::string_view name)
{
    return name.size() == temporaryPrefix.size() + randomLength && name.starts_with(temporaryPrefix) &&
           name.find_first_not_of(randomCharacters, temporaryPrefix.size()) == std::string_view::npos;
}

// A writer holds this lock until its temporary file is renamed. The kernel drops the lock when the process ends. On
// file systems without locks no file is removed.
bool lock(const FileDescriptor& file)
{
    return flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

// Removes a temporary file that no process has locked. Links are not followed, and only plain files are opened.
void removeIfAbandoned(int folder, const char* name, uid_t owner)
{
    struct stat status = {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode) || status.st_uid != owner)
        return;
    // Open for writing: network file systems require that for a lock.
    const FileDescriptor file(openat(folder, name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.isValid() && lock(file))
        unlinkat(folder, name, 0);
}

// Removes files that killed writers left. Files of other users are not touched. The owner is the one that the file
// system gave to our new file.
void sweep(const FileDescriptor& folder, uid_t owner)
{
    const std::string ownPath = pathOf(folder) + "/.";
    const std::unique_ptr<DIR, CloseFolder> entries(opendir(ownPath.c_str()));
    if (!entries)
        return;
    while (const dirent* entry = readdir(entries.get())) { // NOLINT(concurrency-mt-unsafe): the stream is our own
        if (isTemporaryName(&entry->d_name[0]))
            removeIfAbandoned(folder.get(), &entry->d_name[0], owner);
    }
}

// Writes all of the content and waits until it is on the disk.
std::error_code writeAll(const FileDescriptor& file, QByteArrayView content)
{
    while (!content.isEmpty()) {
        const ssize_t count = write(file.get(), content.data(), static_cast<std::size_t>(content.size()));
        if (count < 0 && errno != EINTR)
            return errorWhere(true);
        // A write of 0 bytes without an error means that the disk is full.
        if (count == 0)
            return std::make_error_code(std::errc::no_space_on_device);
        content = content.sliced(std::max(count, ssize_t{0}));
    }
    return errorWhere(fdatasync(file.get()) != 0);
}

std::error_code fill(const FileDescriptor& folder, const FileDescriptor& file, const QByteArray& content)
{
    struct stat status = {};
    if (fstat(file.get(), &status) == 0)
        sweep(folder, status.st_uid);
    return writeAll(file, content);
}

// A symbolic link at the destination is replaced, not followed.
std::error_code rename(const FileDescriptor& folder, const std::string& temporary, const std::string& name)
{
    const std::error_code error =
        errorWhere(renameat(folder.get(), temporary.c_str(), folder.get(), name.c_str()) != 0);
    if (error)
        unlinkat(folder.get(), temporary.c_str(), 0);
    return error;
}

// Writes to a file without a name, so that a killed writer leaves nothing. Gives the error "not supported" when the
// file system has no such files, or there is no /proc.
std::error_code writeUnnamed(const FileDescriptor& folder, const std::string& name, const QByteArray& content)
{
    const FileDescriptor file(openat(folder.get(), ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, ownerOnly));
    if (!file.isValid())
        return std::make_error_code(std::errc::not_supported);
    lock(file);
    if (const std::error_code error = fill(folder, file, content))
        return error;
    const std::string ownPath = pathOf(file);
    for (int attempt = 0; attempt < maximumAttempts; ++attempt) {
        const std::string temporary = temporaryName();
        if (linkat(AT_FDCWD, ownPath.c_str(), folder.get(), temporary.c_str(), AT_SYMLINK_FOLLOW) == 0)
            return rename(folder, temporary, name);
        if (errno != EEXIST)
            break;
    }
    return std::make_error_code(std::errc::not_supported);
}

std::error_code writeNamed(const FileDescriptor& folder, const std::string& name, const QByteArray& content)
{
    std::error_code error;
    for (int attempt = 0; attempt < maximumAttempts; ++attempt) {
        const std::string temporary = temporaryName();
        const FileDescriptor file(
            openat(folder.get(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
        error = errorWhere(!file.isValid());
        if (error == std::errc::file_exists)
            continue;
        if (error)
            return error;
        lock(file);
        error = fill(folder, file, content);
        if (error) {
            unlinkat(folder.get(), temporary.c_str(), 0);
            return error;
        }
        error = rename(folder, temporary, name);
        // Removed by another process before it was locked, or by a machine that does not see our locks.
        if (error != std::errc::no_such_file_or_directory)
            return error;
    }
    return error;
}

} // namespace

std::expected<void, WriteFailure> writePrivateFile(const QString& path, const QByteArray& content)
{
    const fs::path native = bytesOfPath(path).toStdString();
    const std::string folderName = native.has_parent_path() ? native.parent_path().string() : ".";
    const FileDescriptor folder(open(folderName.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::error_code error = errorWhere(!folder.isValid());
    if (!error) {
        const std::string name = native.filename().string();
        error = name.empty() ? std::make_error_code(std::errc::is_a_directory) : writeUnnamed(folder, name, content);
        // Not supported, or removed by a machine that does not see our locks.
        if (error == std::errc::not_supported || error == std::errc::no_such_file_or_directory)
            error = writeNamed(folder, name, content);
    }
    if (error)
        return std::unexpected(writeFailureOf(native, error));
    return {};
}
