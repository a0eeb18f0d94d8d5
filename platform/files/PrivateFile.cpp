#include "platform/files/PrivateFile.h"

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

// A short name of its own in the same folder: the longest names leave no room for more.
constexpr std::string_view temporaryPrefix = ".pelmora-";
constexpr std::size_t randomLength = 6;
constexpr std::string_view randomCharacters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

// Tries to find a name that is free, or to finish where other machines sweep and do not see our locks.
constexpr int maximumAttempts = 100;

constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

class OpenFile final
{
public:
    explicit OpenFile(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile()
    {
        if (isOpen())
            close(m_descriptor);
    }

    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }

private:
    const int m_descriptor;
};

struct CloseFolder
{
    void operator()(DIR* folder) const { closedir(folder); }
};

// A path that leads to what is open, whatever has become of its name.
std::string pathOf(const OpenFile& file)
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

// Whoever writes a temporary file holds this lock until the file has its name, and the kernel drops it with the
// process. Where a file system has no locks, nothing can be locked there, and so nothing is swept.
bool lock(const OpenFile& file)
{
    return flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

// Removes a temporary file without a writer. Links are not followed, and nothing that is not a plain file is opened.
void removeIfAbandoned(int folder, const char* name, uid_t owner)
{
    struct stat status = {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode) || status.st_uid != owner)
        return;
    // For writing, without which a file on a network cannot be locked.
    const OpenFile file(openat(folder, name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.isOpen() && lock(file))
        unlinkat(folder, name, 0);
}

// Leftovers of writers that were killed. Those of other users are left alone: the owner is whoever the file system
// says that a new file of ours belongs to.
void sweep(const OpenFile& folder, uid_t owner)
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

// All of the content, on the disk.
std::error_code writeAll(const OpenFile& file, QByteArrayView content)
{
    while (!content.isEmpty()) {
        const ssize_t count = write(file.get(), content.data(), static_cast<std::size_t>(content.size()));
        if (count < 0 && errno != EINTR)
            return errorWhere(true);
        // A write that stops without an error has met the end of the disk.
        if (count == 0)
            return std::make_error_code(std::errc::no_space_on_device);
        content = content.sliced(std::max(count, ssize_t{0}));
    }
    return errorWhere(fdatasync(file.get()) != 0);
}

std::error_code fill(const OpenFile& folder, const OpenFile& file, const QByteArray& content)
{
    struct stat status = {};
    if (fstat(file.get(), &status) == 0)
        sweep(folder, status.st_uid);
    return writeAll(file, content);
}

// A link that has the file's name is replaced, not followed.
std::error_code rename(const OpenFile& folder, const std::string& temporary, const std::string& name)
{
    const std::error_code error =
        errorWhere(renameat(folder.get(), temporary.c_str(), folder.get(), name.c_str()) != 0);
    if (error)
        unlinkat(folder.get(), temporary.c_str(), 0);
    return error;
}

// By a file that has no name until it is whole, so that a killed writer leaves nothing. The error "not supported" when
// the file system, or a system without /proc, has no such files.
std::error_code writeUnnamed(const OpenFile& folder, const std::string& name, const QByteArray& content)
{
    const OpenFile file(openat(folder.get(), ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, ownerOnly));
    if (!file.isOpen())
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

std::error_code writeNamed(const OpenFile& folder, const std::string& name, const QByteArray& content)
{
    std::error_code error;
    for (int attempt = 0; attempt < maximumAttempts; ++attempt) {
        const std::string temporary = temporaryName();
        const OpenFile file(
            openat(folder.get(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
        error = errorWhere(!file.isOpen());
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
        // Swept away: between its creation and its lock, or by a machine that does not see our locks.
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
    const OpenFile folder(open(folderName.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::error_code error = errorWhere(!folder.isOpen());
    if (!error) {
        const std::string name = native.filename().string();
        error = name.empty() ? std::make_error_code(std::errc::is_a_directory) : writeUnnamed(folder, name, content);
        // Not supported, or swept away by a machine that does not see our locks.
        if (error == std::errc::not_supported || error == std::errc::no_such_file_or_directory)
            error = writeNamed(folder, name, content);
    }
    if (error)
        return std::unexpected(writeFailureOf(native, error));
    return {};
}
