#include "tests/common/SilentServer.h"

#include <QFile>

#include <algorithm>
#include <iterator>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Whether one of the events happens on a descriptor within the time.
bool happens(int descriptor, short events, int milliseconds)
{
    pollfd polled{descriptor, events, 0};
    return ::poll(&polled, 1, milliseconds) == 1;
}

} // namespace

SilentServer::SilentServer(const char* variable)
    : m_variable(variable)
    , m_valueBefore(qgetenv(variable))
    , m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(m_folder.filePath(u"socket"_s));
    qputenv(variable, name);
    if (name.size() >= qsizetype(sizeof address.sun_path))
        return;
    std::ranges::copy(name, std::begin(address.sun_path));
    m_isListening = ::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                    ::listen(m_socket, 8) == 0;
}

SilentServer::~SilentServer()
{
    ::close(m_socket);
    if (m_valueBefore.isNull())
        qunsetenv(m_variable);
    else
        qputenv(m_variable, m_valueBefore);
}

bool SilentServer::isAsked() const
{
    return happens(m_socket, POLLIN, 0);
}

bool SilentServer::isLeft() const
{
    if (!isAsked())
        return false;
    const int connection = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
    const bool left = happens(connection, POLLRDHUP, 5000);
    ::close(connection);
    return left;
}
