#include "support/move/Administrator.h"

#include "support/move/ShellQuoting.h"

#include <QStandardPaths>

#include <array>
#include <cerrno>

#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int forEver = -1;
constexpr int dismissed = 126; // see pkexec(1)
// A shell reports a program that was ended by a signal as this plus the signal's number.
constexpr int endedBySignal = 128;

QString programThatAsks()
{
    return QStandardPaths::findExecutable(u"pkexec"_s);
}

} // namespace

Administrator::~Administrator()
{
    endShell();
}

bool Administrator::canBeAsked()
{
    return !programThatAsks().isEmpty();
}

Administrator::Answer Administrator::request()
{
    if (startShell() && answerTo("echo ready") == "ready")
        return Answer::Granted;
    endShell();
    const bool isCancelled = m_shell.exitStatus() == QProcess::NormalExit && m_shell.exitCode() == dismissed;
    return isCancelled ? Answer::Cancelled : Answer::Refused;
}

std::optional<int> Administrator::run(const QStringList& command)
{
    QStringList words;
    for (const QString& word : command)
        words.append(quotedForShell(word));
    const QString line = words.join(u' ') + " </dev/null >/dev/null; echo $?"_L1;
    const std::optional<QByteArray> answer = answerTo(line.toUtf8());
    bool isNumber = false;
    const int status = answer ? answer->toInt(&isNumber) : 0;
    if (!isNumber || status > endedBySignal)
        return std::nullopt;
    return status;
}

bool Administrator::startShell()
{
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return false;
    m_channel = FileDescriptor(ends[0]);
    const FileDescriptor shellsEnd(ends[1]);
    m_shell.setProcessChannelMode(QProcess::ForwardedChannels);
    m_shell.setInputChannelMode(QProcess::ForwardedInputChannel);
    m_shell.setChildProcessModifier([end = shellsEnd.get()] {
        ::dup2(end, STDIN_FILENO);
        ::dup2(end, STDOUT_FILENO);
    });
    m_shell.start(programThatAsks(), {u"/bin/sh"_s, u"-s"_s});
    return m_shell.waitForStarted(forEver);
}

void Administrator::endShell()
{
    // The shell ends at the end of its input.
    m_channel.reset();
    if (m_shell.state() != QProcess::NotRunning)
        m_shell.waitForFinished(forEver);
}

std::optional<QByteArray> Administrator::answerTo(const QByteArray& line)
{
    const QByteArray command = line + '\n';
    if (::send(m_channel.get(), command.constData(), static_cast<std::size_t>(command.size()), MSG_NOSIGNAL) !=
        command.size())
        return std::nullopt;
    while (!m_unread.contains('\n')) {
        std::array<char, 256> slice{};
        const ssize_t count = ::recv(m_channel.get(), slice.data(), slice.size(), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return std::nullopt;
        m_unread.append(slice.data(), count);
    }
    const qsizetype end = m_unread.indexOf('\n');
    QByteArray answer = m_unread.first(end).trimmed();
    m_unread.remove(0, end + 1);
    return answer;
}
