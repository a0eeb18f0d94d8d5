#include "service/Sandbox.h"

#include "card/FileDescriptor.h"
#include "card/OutsideFolderNames.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <memory>
#include <optional>
#include <system_error>

#include <fcntl.h>
#include <linux/landlock.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

using Rights = decltype(landlock_ruleset_attr::handled_access_fs);

// All rights that change files, by the version of the kernel's interface that brought them.
constexpr Rights firstRights = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                               LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                               LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                               LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                               LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
constexpr Rights secondRights = LANDLOCK_ACCESS_FS_REFER;
constexpr Rights thirdRights = Rights{1} << 14; // to truncate; younger than the headers of some systems

// What a library does with files of its own.
constexpr Rights ownFiles = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                            LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                            secondRights | thirdRights;
// Devices are written to without being changed: a reader may be one, or /dev/null.
constexpr Rights devices = LANDLOCK_ACCESS_FS_WRITE_FILE;

QString missing(const QString& protection, int error)
{
    const std::string reason = std::system_category().message(error);
    return u"protection indisponible : %1 (%2)"_s.arg(protection, QString::fromLocal8Bit(reason.c_str()));
}

std::optional<QString> refusePrivileges()
{
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
        return std::nullopt;
    return missing(u"renoncer aux privilèges"_s, errno);
}

std::optional<QString> refuseNetwork()
{
    struct FilterRelease
    {
        void operator()(void* filter) const { ::seccomp_release(filter); }
    };
    const std::unique_ptr<void, FilterRelease> filter(::seccomp_init(SCMP_ACT_ALLOW));
    if (!filter)
        return missing(u"refuser le réseau"_s, ENOMEM);
    int failure = ::seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);
    const scmp_arg_cmp notLocal{.arg = 0, .op = SCMP_CMP_NE, .datum_a = AF_UNIX, .datum_b = 0};
    if (failure == 0)
        failure = ::seccomp_rule_add_array(filter.get(), SCMP_ACT_ERRNO(EACCES), SCMP_SYS(socket), 1, &notLocal);
    // These do what other calls do, sockets too, where a filter does not see it. Programs go on without them.
    for (const int call : {SCMP_SYS(io_uring_setup), SCMP_SYS(io_uring_enter), SCMP_SYS(io_uring_register)}) {
        if (failure == 0)
            failure = ::seccomp_rule_add_array(filter.get(), SCMP_ACT_ERRNO(ENOSYS), call, 0, nullptr);
    }
    if (failure == 0)
        failure = ::seccomp_load(filter.get());
    return failure == 0 ? std::nullopt : std::optional(missing(u"refuser le réseau"_s, -failure));
}

Rights rightsOfVersion(long version)
{
    return firstRights | (version >= 2 ? secondRights : 0) | (version >= 3 ? thirdRights : 0);
}

/// A folder that is not there needs no rule.
bool allowBeneath(const FileDescriptor& rules, const QByteArray& folder, Rights rights)
{
    const FileDescriptor opened(::open(folder.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened.isValid())
        return true;
    const landlock_path_beneath_attr beneath{.allowed_access = rights, .parent_fd = opened.get()};
    return ::syscall(SYS_landlock_add_rule, rules.get(), LANDLOCK_RULE_PATH_BENEATH, &beneath, 0) == 0;
}

std::optional<QString> refuseWriting(const QList<QByteArray>& writableFolders)
{
    const QString protection = u"refuser l’écriture de fichiers"_s;
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return missing(protection, errno);
    const Rights handled = rightsOfVersion(version);
    landlock_ruleset_attr attributes{};
    attributes.handled_access_fs = handled;
    const FileDescriptor rules(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
    if (!rules.isValid())
        return missing(protection, errno);
    bool isDone = allowBeneath(rules, "/dev", devices);
    for (const QByteArray& folder : writableFolders)
        isDone = isDone && allowBeneath(rules, folder, ownFiles & handled);
    if (!isDone || ::syscall(SYS_landlock_restrict_self, rules.get(), 0) != 0)
        return missing(protection, errno);
    return std::nullopt;
}

} // namespace

QStringList enterSandbox(const QList<QByteArray>& writableFolders)
{
    QStringList lacking;
    for (const std::optional<QString>& sentence :
         {refusePrivileges(), refuseNetwork(), refuseWriting(writableFolders)}) {
        if (sentence)
            lacking << *sentence;
    }
    return lacking;
}

QList<QByteArray> libraryFolders()
{
    const QString home = QDir::homePath() + u'/';
    return {QFile::encodeName(home + OutsideFolder::logs), QFile::encodeName(home + OutsideFolder::sedica)};
}
