#include "service/ProcessSetup.h"

#include <QFile>

#include <csignal>
#include <filesystem>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace {

// Above 2, even if a standard descriptor is closed.
FileDescriptor privateCopy(int descriptor)
{
    return FileDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

} // namespace

std::optional<ChannelDescriptors> takeStandardChannel()
{
    ChannelDescriptors channel{privateCopy(STDIN_FILENO), privateCopy(STDOUT_FILENO)};
    if (!channel.requests.isValid() || !channel.replies.isValid())
        return std::nullopt;
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!nothing.isValid() || ::dup2(nothing.get(), STDIN_FILENO) < 0)
        return std::nullopt;
    // When standard error is closed, prints are dropped.
    if (::dup2(STDERR_FILENO, STDOUT_FILENO) < 0 && ::dup2(nothing.get(), STDOUT_FILENO) < 0)
        return std::nullopt;
    return channel;
}

bool protectProcess()
{
    // 1 byte, not 0: with any other limit the kernel still pipes the core to a program such as systemd-coredump. The
    // call fails when the limit is 0 already.
    constexpr rlimit noCore{.rlim_cur = 1, .rlim_max = 1};
    const bool coresAreOff = ::setrlimit(RLIMIT_CORE, &noCore) == 0 || ::prctl(PR_SET_DUMPABLE, 0) == 0;
    return coresAreOff && std::signal(SIGPIPE, SIG_IGN) != SIG_ERR && std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR;
}

QString resourceFolder()
{
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return QFile::decodeName((program.parent_path() / "../../share/pelmora").lexically_normal().c_str());
}
