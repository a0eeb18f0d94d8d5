#include "app/desktop/SingleInstance.h"

#include "app/desktop/ActivationToken.h"
#include "app/desktop/RuntimeFolder.h"
#include "app/models/CommandLine.h"
#include "platform/NativePath.h"
#include "support/MXLog.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::size_t maximumGuests = 8;
constexpr char answer = 'k';
// Pause between attempts while the instance is starting or ending.
constexpr int retryPause = 10; // milliseconds
// Pause between attempts to accept a client.
constexpr std::chrono::milliseconds welcomePause{250};

struct SocketAddress
{
    sockaddr_un address{};
    socklen_t length = 0;
};

/// The address of a socket in an open folder, through its descriptor: the folder's path may be too long for an address.
std::optional<SocketAddress> addressIn(const FileDescriptor& folder, const QString& name)
{
    const QByteArray path = QFile::encodeName(u"/proc/self/fd/%1/%2"_s.arg(folder.get()).arg(name));
    SocketAddress result;
    if (static_cast<std::size_t>(path.size()) >= sizeof result.address.sun_path)
        return std::nullopt;
    result.address.sun_family = AF_UNIX;
    std::ranges::copy(path, std::begin(result.address.sun_path));
    result.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(path.size()) + 1);
    return result;
}

const sockaddr* generic(const SocketAddress& address)
{
    // The socket functions take this type for all addresses.
    return reinterpret_cast<const sockaddr*>(&address.address); // NOLINT(*-reinterpret-cast)
}

/// A socket that keeps message boundaries.
FileDescriptor makeSocket()
{
    return FileDescriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

bool isOwnUser(const FileDescriptor& socket)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    return getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == geteuid();
}

int millisecondsUntil(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

bool waitForAnswer(const FileDescriptor& socket, Clock::time_point deadline)
{
    pollfd ready{.fd = socket.get(), .events = POLLIN, .revents = 0};
    int count = 0;
    do {
        count = poll(&ready, 1, millisecondsUntil(deadline));
    } while (count < 0 && errno == EINTR);
    char received = 0;
    return count > 0 && recv(socket.get(), &received, 1, 0) == 1 && received == answer;
}

/// Sends the message to the running instance; true when it has answered.
bool tell(const FileDescriptor& folder, const QString& socketName, const QByteArray& message,
          Clock::time_point deadline)
{
    const FileDescriptor socket = makeSocket();
    const std::optional<SocketAddress> address = addressIn(folder, socketName);
    const auto size = static_cast<std::size_t>(message.size());
    return address && socket.isValid() && connect(socket.get(), generic(*address), address->length) == 0 &&
           isOwnUser(socket) && send(socket.get(), message.constData(), size, MSG_NOSIGNAL) == message.size() &&
           waitForAnswer(socket, deadline);
}

std::string lastError()
{
    return std::generic_category().message(errno);
}

/// The display server's address, without the screen number.
QString desktopName()
{
    if (const QString wayland = qEnvironmentVariable("WAYLAND_DISPLAY"); !wayland.isEmpty())
        return wayland;
    const QString display = qEnvironmentVariable("DISPLAY");
    const qsizetype dot = display.indexOf(u'.', display.lastIndexOf(u':') + 1);
    return display.left(dot);
}

} // namespace

QString SingleInstance::keyFor(const CommandLine& command)
{
    // A run with a simulated reader must not show the window of a real one.
    const QStringList parts{desktopName(), command.simulate ? u"simulate"_s : QString(),
                            command.simulatedCard.value_or(QString()), command.cardService.value_or(QString())};
    const QByteArray text = bytesOfPath(parts.join(QChar::Null));
    const QByteArray digest = QCryptographicHash::hash(text, QCryptographicHash::Sha256);
    return QString::fromLatin1(digest.first(8).toHex());
}

QString SingleInstance::noAnswerText()
{
    return u"l’application est déjà ouverte, mais elle ne répond pas ; réessayez dans un instant."_s;
}

SingleInstance::SingleInstance(const QString& key)
    : SingleInstance(openRuntimeFolder(), key)
{
}

SingleInstance::SingleInstance(FileDescriptor folder, const QString& key, std::chrono::milliseconds patience)
    : m_folder(std::move(folder))
    , m_name(u"pelmora-"_s + key)
    , m_patience(patience)
{
}

SingleInstance::~SingleInstance()
{
    release();
}

SingleInstance::Claim SingleInstance::claim(const InstanceMessage& message)
{
    if (!m_folder.isValid()) {
        MXLog::logWarning("Single instance: no private runtime folder");
        return Claim::First;
    }
    const Clock::time_point deadline = Clock::now() + m_patience;
    const QByteArray bytes = message.encoded();
    do {
        if (takeLock()) {
            openSocket();
            return Claim::First;
        }
        if (!bytes.isEmpty() && tell(m_folder, socketName(), bytes, deadline))
            return Claim::AlreadyRunning;
        // It may be starting without a socket yet, ending, or busy.
        poll(nullptr, 0, std::min(retryPause, millisecondsUntil(deadline)));
    } while (Clock::now() < deadline);
    return Claim::NoAnswer;
}

QString SingleInstance::socketName() const
{
    return m_name + ".socket"_L1;
}

/// False when another process has the lock. Where locks do not work, every start is a first one.
bool SingleInstance::takeLock()
{
    const QByteArray name = QFile::encodeName(m_name + ".lock"_L1);
    FileDescriptor lock(
        openat(m_folder.get(), name.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!lock.isValid()) {
        MXLog::logWarning("Single instance: {}", lastError());
        return true;
    }
    if (flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return false;
        MXLog::logWarning("Single instance: {}", lastError());
        return true;
    }
    m_lock = std::move(lock);
    return true;
}

void SingleInstance::openSocket()
{
    if (!m_lock.isValid())
        return;
    // Removes an old socket: a running instance would have the lock.
    unlinkat(m_folder.get(), QFile::encodeName(socketName()).constData(), 0);
    FileDescriptor socket = makeSocket();
    const std::optional<SocketAddress> address = addressIn(m_folder, socketName());
    if (!socket.isValid() || !address || bind(socket.get(), generic(*address), address->length) != 0 ||
        listen(socket.get(), maximumGuests) != 0) {
        MXLog::logWarning("Single instance: {}", lastError());
        return;
    }
    m_socket = std::move(socket);
}

void SingleInstance::startListening()
{
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &SingleInstance::release);
    if (!m_socket.isValid())
        return;
    m_socketNotifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    connect(m_socketNotifier.get(), &QSocketNotifier::activated, this, &SingleInstance::welcomeGuests);
}

void SingleInstance::release()
{
    while (!m_guests.empty())
        dismiss(m_guests.front().socket.get());
    m_socketNotifier.reset();
    if (m_socket.isValid())
        unlinkat(m_folder.get(), QFile::encodeName(socketName()).constData(), 0);
    m_socket.reset();
    // Last: the next owner of the lock makes its own socket.
    m_lock.reset();
}

void SingleInstance::welcomeGuests()
{
    FileDescriptor socket(accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket.isValid()) {
        // Pauses after errors other than a client that has gone, for example when no descriptor is free.
        if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED)
            pauseWelcome();
        return;
    }
    if (!isOwnUser(socket)) {
        MXLog::logWarning("Single instance: another user's call was refused");
        return;
    }
    // A client sends its message at once. When too many have sent nothing, the oldest is disconnected.
    if (m_guests.size() == maximumGuests)
        dismiss(m_guests.front().socket.get());

    const int descriptor = socket.get();
    auto* const notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, descriptor] { hear(descriptor); });
    m_guests.push_back({.socket = std::move(socket), .notifier = notifier});
}

/// A client that cannot be accepted stays in the queue, and the notifier would fire all the time.
void SingleInstance::pauseWelcome()
{
    m_socketNotifier->setEnabled(false);
    QTimer::singleShot(welcomePause, m_socketNotifier.get(), [this] { m_socketNotifier->setEnabled(true); });
}

void SingleInstance::hear(int socket)
{
    std::array<char, InstanceMessage::maximumSize> buffer; // NOLINT(*-member-init): recv fills what is used
    // With MSG_TRUNC recv returns the real length.
    const ssize_t count = recv(socket, buffer.data(), buffer.size(), MSG_TRUNC);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    std::optional<InstanceMessage> message;
    if (count > 0 && count <= std::ssize(buffer))
        message = InstanceMessage::decoded({buffer.data(), count});
    if (message)
        send(socket, &answer, 1, MSG_NOSIGNAL);
    else if (count > 0)
        MXLog::logWarning("Single instance: malformed message");
    dismiss(socket);

    if (!message)
        return;
    if (message->activationToken)
        ActivationToken::use(*message->activationToken);
    if (message->cardPath)
        Q_EMIT openRequested(*message->cardPath);
    else if (message->action)
        Q_EMIT actionRequested(*message->action);
    else
        Q_EMIT reopenRequested();
}

void SingleInstance::dismiss(int socket)
{
    const auto guest = std::ranges::find(m_guests, socket, [](const Guest& each) { return each.socket.get(); });
    // Deleted later: this may run in its signal.
    guest->notifier->setEnabled(false);
    guest->notifier->deleteLater();
    m_guests.erase(guest);
}
