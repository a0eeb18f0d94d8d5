#include "service/PcscBroker.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A hanging PC/SC service stops accepting connections. No call to a reader may take longer than this.
constexpr timeval connectionPatience{.tv_sec = 20, .tv_usec = 0};

constexpr int lifelineOfBroker = 0;                      // its only descriptor at the start
constexpr int waitForClone = static_cast<int>(__WCLONE); // for a child without a signal at its end

struct Message
{
    char byte = 0;
    iovec content{.iov_base = &byte, .iov_len = 1};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr header{};

    Message()
    {
        header.msg_iov = &content;
        header.msg_iovlen = 1;
        header.msg_control = control.data();
        header.msg_controllen = control.size();
    }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    ~Message() = default;
};

FileDescriptor receiveDescriptor(int socket)
{
    Message message;
    if (::recvmsg(socket, &message.header, MSG_CMSG_CLOEXEC) != 1)
        return {};
    const cmsghdr* const control = CMSG_FIRSTHDR(&message.header);
    if (control == nullptr || control->cmsg_type != SCM_RIGHTS)
        return {};
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(control), sizeof descriptor);
    return FileDescriptor(descriptor);
}

bool sendDescriptor(int socket, int descriptor)
{
    Message message;
    cmsghdr* const control = CMSG_FIRSTHDR(&message.header);
    control->cmsg_level = SOL_SOCKET;
    control->cmsg_type = SCM_RIGHTS;
    control->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(control), &descriptor, sizeof descriptor);
    return ::sendmsg(socket, &message.header, MSG_NOSIGNAL) == 1;
}

/// Answers connect calls.
class Connections
{
public:
    Connections(FileDescriptor notifications, const QByteArray& path)
        : m_notifications(std::move(notifications))
    {
        m_address.sun_family = AF_UNIX;
        std::memcpy(m_address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    }

    /// Returns when the last process under the filter has ended, or the lifeline was closed.
    void serve() const
    {
        std::array<pollfd, 2> set{{{.fd = lifelineOfBroker, .events = POLLIN, .revents = 0},
                                   {.fd = m_notifications.get(), .events = POLLIN, .revents = 0}}};
        while (::poll(set.data(), set.size(), -1) > 0 && set[0].revents == 0 && (set[1].revents & POLLIN) != 0)
            answerOne();
    }

private:
    void answerOne() const
    {
        // Allocated with the kernel's size each time, because the kernel requires them to be zero.
        seccomp_notif* request = nullptr;
        seccomp_notif_resp* response = nullptr;
        if (::seccomp_notify_alloc(&request, &response) != 0)
            ::_exit(1);
        if (::seccomp_notify_receive(m_notifications.get(), request) == 0) {
            response->id = request->id;
            response->error = -connect(*request);
            ::seccomp_notify_respond(m_notifications.get(), response);
        } else if (errno != ENOENT && errno != EINTR) {
            // ENOENT: the process has ended. After another error the broker exits; then every connection is refused.
            ::_exit(EXIT_FAILURE);
        }
        ::seccomp_notify_free(request, response);
    }

    /// Replaces the process's socket by a new connection to the PC/SC service. An errno, or 0.
    [[nodiscard]] int connect(const seccomp_notif& request) const
    {
        if (!isWanted(request))
            return EACCES;
        const FileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (!connection.isValid() ||
            ::setsockopt(connection.get(), SOL_SOCKET, SO_SNDTIMEO, &connectionPatience, sizeof connectionPatience) !=
                0 ||
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the way of sockets
            ::connect(connection.get(), reinterpret_cast<const sockaddr*>(&m_address), sizeof m_address) != 0)
            return errno;
        constexpr timeval forEver{.tv_sec = 0, .tv_usec = 0};
        ::setsockopt(connection.get(), SOL_SOCKET, SO_SNDTIMEO, &forEver, sizeof forEver);
        seccomp_notif_addfd place{.id = request.id,
                                  .flags = SECCOMP_ADDFD_FLAG_SETFD,
                                  .srcfd = static_cast<__u32>(connection.get()),
                                  .newfd = static_cast<__u32>(request.data.args[0]),
                                  .newfd_flags = O_CLOEXEC};
        return ::ioctl(m_notifications.get(), SECCOMP_IOCTL_NOTIF_ADDFD, &place) < 0 ? errno : 0;
    }

    /// Whether the address is that of the PC/SC service; true when it cannot be read, as no other is reached.
    [[nodiscard]] bool isWanted(const seccomp_notif& request) const
    {
        sockaddr_un asked{};
        const std::size_t size = std::min<std::size_t>(request.data.args[2], sizeof asked);
        const iovec here{.iov_base = &asked, .iov_len = size};
        // NOLINTNEXTLINE(*-int-to-ptr,cppcoreguidelines-pro-type-reinterpret-cast): of the other process
        const iovec there{.iov_base = reinterpret_cast<void*>(request.data.args[1]), .iov_len = size};
        const ssize_t count = ::process_vm_readv(static_cast<pid_t>(request.pid), &here, 1, &there, 1, 0);
        if (count < 0 && errno == EPERM)
            return true;
        if (count < static_cast<ssize_t>(sizeof asked.sun_family) || asked.sun_family != AF_UNIX)
            return false;
        return pathOf(asked) == pathOf(m_address);
    }

    static std::string_view pathOf(const sockaddr_un& address)
    {
        return {address.sun_path, ::strnlen(address.sun_path, sizeof address.sun_path)};
    }

    FileDescriptor m_notifications;
    sockaddr_un m_address{};
};

[[noreturn]] void becomeBroker(const FileDescriptor& lifeline, const QByteArray& path, pid_t parent)
{
    // Closes all inherited descriptors: the channel must close when the service ends.
    if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || ::getppid() != parent || ::prctl(PR_SET_DUMPABLE, 0) != 0 ||
        ::dup2(lifeline.get(), lifelineOfBroker) < 0 ||
        ::syscall(SYS_close_range, lifelineOfBroker + 1, UINT_MAX, 0) != 0)
        ::_exit(1);
    if (FileDescriptor notifications = receiveDescriptor(lifelineOfBroker); notifications.isValid())
        Connections(std::move(notifications), path).serve();
    ::_exit(0);
}

} // namespace

QByteArray pcscSocketPath()
{
    constexpr auto variable = "PCSCLITE_CSOCK_NAME";
    return qEnvironmentVariableIsSet(variable) ? qgetenv(variable) : QByteArray("/run/pcscd/pcscd.comm");
}

std::expected<PcscBroker, int> PcscBroker::start(const QByteArray& socketPath)
{
    if (socketPath.size() >= static_cast<qsizetype>(sizeof(sockaddr_un::sun_path)))
        return std::unexpected(ENAMETOOLONG);
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return std::unexpected(errno);
    FileDescriptor own(ends[0]);
    const FileDescriptor others(ends[1]);
    const pid_t parent = ::getpid();
    // A fork without a signal at the child's end, so that a library's wait() does not see it.
    const auto child = static_cast<pid_t>(::syscall(SYS_clone, 0, nullptr, nullptr, nullptr, 0));
    if (child < 0)
        return std::unexpected(errno);
    if (child == 0)
        becomeBroker(others, socketPath, parent);
    return PcscBroker(child, std::move(own));
}

PcscBroker::PcscBroker(pid_t process, FileDescriptor lifeline)
    : m_process(process)
    , m_lifeline(std::move(lifeline))
{
}

PcscBroker::PcscBroker(PcscBroker&& other) noexcept
    : m_process(std::exchange(other.m_process, -1))
    , m_lifeline(std::move(other.m_lifeline))
{
}

PcscBroker::~PcscBroker()
{
    m_lifeline.reset();
    while (m_process > 0 && ::waitpid(m_process, nullptr, waitForClone) < 0 && errno == EINTR) {
    }
}

std::expected<void, int> PcscBroker::serve(const FileDescriptor& notifications) const
{
    // Where only parents may trace processes (Yama), this allows the child to read this process.
    ::prctl(PR_SET_PTRACER, m_process, 0, 0, 0);
    if (!sendDescriptor(m_lifeline.get(), notifications.get()))
        return std::unexpected(errno);
    return {};
}
