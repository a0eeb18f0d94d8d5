#include "platform/Administrator.h"

#include "platform/ShellQuoting.h"

#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

constexpr int forEver = -1;
constexpr int dismissed = 126; // see pkexec(1)
// A shell gives a program that a signal has ended this and the signal's number.
constexpr int endedBySignal = 128;

QString programThatAsks()
{
    return QStandardPaths::findExecutable(u"pkexec"_s);
}

} // namespace

Administrator::~Administrator()
{
    // The end of what it reads ends the shell.
    m_shell.closeWriteChannel();
    if (m_shell.state() != QProcess::NotRunning)
        m_shell.waitForFinished(forEver);
}

bool Administrator::canBeAsked()
{
    return !programThatAsks().isEmpty();
}

Administrator::Answer Administrator::request()
{
    m_shell.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_shell.start(programThatAsks(), {u"/bin/sh"_s, u"-s"_s});
    if (answerTo("echo ready") == "ready")
        return Answer::Granted;
    m_shell.closeWriteChannel();
    m_shell.waitForFinished(forEver);
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

std::optional<QByteArray> Administrator::answerTo(const QByteArray& line)
{
    if (!m_shell.waitForStarted(forEver))
        return std::nullopt;
    m_shell.write(line + '\n');
    while (!m_shell.canReadLine()) {
        if (!m_shell.waitForReadyRead(forEver))
            return std::nullopt;
    }
    return m_shell.readLine().trimmed();
}
