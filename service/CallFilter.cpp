#include "service/CallFilter.h"

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <memory>

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/seccomp.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Newer than libseccomp. The numbers are the same on all processors.
constexpr int callFchmodat2 = 452;
constexpr int callSetxattrat = 463;
constexpr int callRemovexattrat = 466;
constexpr int callFileSetattr = 469;

constexpr std::uint64_t socketTypeMask = 0xf;     // the type without flags
constexpr std::uint64_t wordMask = 0xffff'ffffUL; // an int, as the kernel reads it
constexpr std::uint64_t truncatingMask = O_ACCMODE | O_TRUNC;

/// A filter that allows calls without a rule.
class Filter
{
public:
    Filter()
        : m_filter(::seccomp_init(SCMP_ACT_ALLOW))
        , m_failure(m_filter ? ::seccomp_attr_set(m_filter.get(), SCMP_FLTATR_CTL_TSYNC, 1) : -ENOMEM)
    {
    }

    void add(std::uint32_t action, int call, std::initializer_list<scmp_arg_cmp> comparisons = {})
    {
        if (m_failure == 0)
            m_failure = ::seccomp_rule_add_array(m_filter.get(), action, call,
                                                 static_cast<unsigned>(comparisons.size()), comparisons.begin());
    }
    void refuse(int error, std::initializer_list<int> calls)
    {
        for (const int call : calls)
            add(SCMP_ACT_ERRNO(static_cast<unsigned>(error)), call);
    }

    [[nodiscard]] std::expected<void, int> load()
    {
        if (m_failure == 0)
            m_failure = ::seccomp_load(m_filter.get());
        return m_failure == 0 ? std::expected<void, int>() : std::unexpected(-m_failure);
    }
    /// For a loaded filter with notifications.
    [[nodiscard]] FileDescriptor notifications() const { return FileDescriptor(::seccomp_notify_fd(m_filter.get())); }

private:
    struct Release
    {
        void operator()(void* filter) const { ::seccomp_release(filter); }
    };

    std::unique_ptr<void, Release> m_filter;
    int m_failure; // errno of the first failed step, negative
};

scmp_arg_cmp isNot(unsigned argument, std::uint64_t value)
{
    return {.arg = argument, .op = SCMP_CMP_NE, .datum_a = value, .datum_b = 0};
}

scmp_arg_cmp isMasked(unsigned argument, std::uint64_t mask, std::uint64_t value)
{
    return {.arg = argument, .op = SCMP_CMP_MASKED_EQ, .datum_a = mask, .datum_b = value};
}

void refuseSockets(Filter& filter)
{
    constexpr auto refused = SCMP_ACT_ERRNO(EACCES);
    filter.add(refused, SCMP_SYS(socket), {isNot(0, AF_UNIX)});
    // A datagram names its receiver in memory, which a filter cannot read.
    for (const int type : {SOCK_DGRAM, SOCK_RAW}) {
        const auto value = static_cast<std::uint64_t>(type);
        filter.add(refused, SCMP_SYS(socket), {isMasked(1, socketTypeMask, value)});
        filter.add(refused, SCMP_SYS(socketpair), {isMasked(1, socketTypeMask, value)});
    }
    filter.refuse(EACCES, {SCMP_SYS(bind), SCMP_SYS(listen)});
    // io_uring makes calls, also for sockets, that filters do not see. Programs work without it.
    filter.refuse(ENOSYS, {SCMP_SYS(io_uring_setup), SCMP_SYS(io_uring_enter), SCMP_SYS(io_uring_register)});
}

/// Landlock does not cover these: they work on files that are not open for writing.
void refuseChangesOfFiles(Filter& filter)
{
    filter.refuse(EPERM, {SCMP_SYS(chmod),       SCMP_SYS(fchmod),       SCMP_SYS(fchmodat),     callFchmodat2,
                          SCMP_SYS(chown),       SCMP_SYS(fchown),       SCMP_SYS(lchown),       SCMP_SYS(fchownat),
                          SCMP_SYS(setxattr),    SCMP_SYS(lsetxattr),    SCMP_SYS(fsetxattr),    callSetxattrat,
                          SCMP_SYS(removexattr), SCMP_SYS(lremovexattr), SCMP_SYS(fremovexattr), callRemovexattrat,
                          SCMP_SYS(utime),       SCMP_SYS(utimes),       SCMP_SYS(futimesat),    SCMP_SYS(utimensat),
                          SCMP_SYS(truncate),    callFileSetattr});
    for (const std::uint64_t request : {std::uint64_t{FS_IOC_SETFLAGS}, std::uint64_t{FS_IOC_FSSETXATTR}})
        filter.add(SCMP_ACT_ERRNO(EPERM), SCMP_SYS(ioctl), {isMasked(1, wordMask, request)});
    // O_TRUNC truncates a file even when it is opened for reading.
    for (const std::uint64_t access : {std::uint64_t{O_RDONLY}, std::uint64_t{O_ACCMODE}}) {
        filter.add(SCMP_ACT_ERRNO(EACCES), SCMP_SYS(open), {isMasked(1, truncatingMask, access | O_TRUNC)});
        filter.add(SCMP_ACT_ERRNO(EACCES), SCMP_SYS(openat), {isMasked(2, truncatingMask, access | O_TRUNC)});
    }
    // openat2 has its flags in memory. Programs fall back to openat.
    filter.refuse(ENOSYS, {SCMP_SYS(openat2)});
}

void refuseOtherProcesses(Filter& filter, bool areSignalsRefused)
{
    // A limit of processor time can end another process.
    filter.add(SCMP_ACT_ERRNO(EPERM), SCMP_SYS(prlimit64), {isNot(0, 0)});
    // These put text into a terminal, which its shell would run.
    for (const std::uint64_t request : {std::uint64_t{TIOCSTI}, std::uint64_t{TIOCLINUX}})
        filter.add(SCMP_ACT_ERRNO(EPERM), SCMP_SYS(ioctl), {isMasked(1, wordMask, request)});
#ifndef __SANITIZE_ADDRESS__ // its leak detection uses these calls
    filter.refuse(EPERM,
                  {SCMP_SYS(ptrace), SCMP_SYS(process_vm_readv), SCMP_SYS(process_vm_writev), SCMP_SYS(pidfd_getfd)});
#endif
    if (!areSignalsRefused)
        return;
    const auto own = static_cast<std::uint64_t>(::getpid());
    for (const int call : {SCMP_SYS(kill), SCMP_SYS(tgkill), SCMP_SYS(rt_sigqueueinfo), SCMP_SYS(rt_tgsigqueueinfo)})
        filter.add(SCMP_ACT_ERRNO(EPERM), call, {isNot(0, own)});
    filter.refuse(EPERM, {SCMP_SYS(tkill), SCMP_SYS(pidfd_send_signal)});
    // These make the kernel send signals to another process.
    for (const std::uint64_t command : {std::uint64_t{F_SETOWN}, std::uint64_t{F_SETOWN_EX}})
        filter.add(SCMP_ACT_ERRNO(EPERM), SCMP_SYS(fcntl), {isMasked(1, wordMask, command)});
    for (const std::uint64_t request : {std::uint64_t{FIOSETOWN}, std::uint64_t{SIOCSPGRP}})
        filter.add(SCMP_ACT_ERRNO(EPERM), SCMP_SYS(ioctl), {isMasked(1, wordMask, request)});
}

} // namespace

std::expected<void, int> refuseCalls(bool areSignalsRefused)
{
    Filter filter;
    refuseSockets(filter);
    refuseChangesOfFiles(filter);
    refuseOtherProcesses(filter, areSignalsRefused);
    return filter.load();
}

std::expected<FileDescriptor, int> handOverConnections()
{
    Filter filter;
    filter.add(SCMP_ACT_NOTIFY, SCMP_SYS(connect));
    // A second listener could allow its own calls.
    filter.add(SCMP_ACT_ERRNO(EPERM), SCMP_SYS(seccomp),
               {isMasked(1, SECCOMP_FILTER_FLAG_NEW_LISTENER, SECCOMP_FILTER_FLAG_NEW_LISTENER)});
    if (const std::expected<void, int> loaded = filter.load(); !loaded)
        return std::unexpected(loaded.error());
    return filter.notifications();
}

std::expected<void, int> refuseReceivers()
{
    Filter filter;
    filter.add(SCMP_ACT_ERRNO(EACCES), SCMP_SYS(sendto), {isNot(4, 0)});
    filter.refuse(EACCES, {SCMP_SYS(sendmsg), SCMP_SYS(sendmmsg)});
    return filter.load();
}
