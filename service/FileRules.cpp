#include "service/FileRules.h"

#include "platform/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using Rights = decltype(landlock_ruleset_attr::handled_access_fs);

// The rights that change files, by the Landlock version that introduced them.
constexpr Rights firstRights = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                               LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                               LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                               LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                               LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
constexpr Rights secondRights = LANDLOCK_ACCESS_FS_REFER;
// Missing in the headers of some systems: truncation, and restrictions besides files.
constexpr Rights thirdRights = Rights{1} << 14;
constexpr std::uint64_t abstractSockets = 1;
constexpr std::uint64_t signals = 2;
constexpr long versionOfScopes = 6;

/// landlock_ruleset_attr of that version.
struct RulesetAttributes
{
    Rights files = 0;
    std::uint64_t network = 0;
    std::uint64_t scopes = 0;
};

// For a library's own files.
constexpr Rights ownFiles = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                            LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                            secondRights | thirdRights;
// Devices are written to but not changed. A reader without PC/SC is a USB device.
constexpr Rights devices = LANDLOCK_ACCESS_FS_WRITE_FILE;
constexpr std::array writableDevices{"/dev/null", "/dev/zero", "/dev/full", "/dev/bus/usb"};

Rights rightsOfVersion(long version)
{
    return firstRights | (version >= 2 ? secondRights : 0) | (version >= 3 ? thirdRights : 0);
}

/// A missing path needs no rule.
bool allowBeneath(const FileDescriptor& rules, const char* path, Rights rights)
{
    const FileDescriptor opened(::open(path, O_PATH | O_CLOEXEC));
    if (!opened.isValid())
        return true;
    const landlock_path_beneath_attr beneath{.allowed_access = rights, .parent_fd = opened.get()};
    return ::syscall(SYS_landlock_add_rule, rules.get(), LANDLOCK_RULE_PATH_BENEATH, &beneath, 0) == 0;
}

bool isFolder(const QByteArray& path)
{
    struct stat status = {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

std::expected<FileRules, int> holdFiles(const QList<QByteArray>& writableFolders)
{
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return std::unexpected(errno);
    const bool hasScopes = version >= versionOfScopes;
    const RulesetAttributes attributes{
        .files = rightsOfVersion(version), .network = 0, .scopes = hasScopes ? abstractSockets | signals : 0};
    const std::size_t size = hasScopes ? sizeof attributes : sizeof attributes.files;
    const FileDescriptor rules(static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, size, 0)));
    if (!rules.isValid())
        return std::unexpected(errno);
    bool isDone = std::ranges::all_of(writableDevices,
                                      [&rules](const char* device) { return allowBeneath(rules, device, devices); });
    for (const QByteArray& folder : writableFolders) {
        if (isFolder(folder))
            isDone = isDone && allowBeneath(rules, folder.constData(), ownFiles & attributes.files);
    }
    if (!isDone || ::syscall(SYS_landlock_restrict_self, rules.get(), 0) != 0)
        return std::unexpected(errno);
    return FileRules{.areSignalsHeld = hasScopes};
}
