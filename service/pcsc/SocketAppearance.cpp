#include "service/pcsc/SocketAppearance.h"

#include <QFileInfo>

#include <array>

#include <poll.h>
#include <sys/inotify.h>

namespace {

// A service binds its socket, which makes the file, then listens, then sets the file's permissions.
constexpr std::uint32_t watchedChanges = IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR;

} // namespace

SocketAppearance::SocketAppearance(const QByteArray& socketPath)
    : m_folder(QFile::encodeName(QFileInfo(QFile::decodeName(socketPath)).path()))
    , m_changes(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
}

void SocketAppearance::arm()
{
    if (::inotify_add_watch(m_changes.get(), m_folder.constData(), watchedChanges) >= 0)
        return;
    const QByteArray parent = QFile::encodeName(QFileInfo(QFile::decodeName(m_folder)).path());
    ::inotify_add_watch(m_changes.get(), parent.constData(), watchedChanges);
    // It may have been made between the two calls.
    ::inotify_add_watch(m_changes.get(), m_folder.constData(), watchedChanges);
}

void SocketAppearance::wait(int stop, std::chrono::milliseconds longest)
{
    std::array<pollfd, 2> set{
        {{.fd = stop, .events = POLLIN, .revents = 0}, {.fd = m_changes.get(), .events = POLLIN, .revents = 0}}};
    ::poll(set.data(), set.size(), static_cast<int>(longest.count()));
    forgetChanges();
}

void SocketAppearance::forgetChanges()
{
    std::array<char, 4096> events; // NOLINT(cppcoreguidelines-pro-type-member-init): read fills it, nothing reads it
    while (::read(m_changes.get(), events.data(), events.size()) > 0) {
    }
}
