#include "platform/print/PrintServer.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The codes of the other errors are IPP's, which are not negative.
Error silence()
{
    return {printErrorDomain.toString(), -1, u"Le serveur d’impression ne répond pas."_s};
}

Error breakdown()
{
    return {printErrorDomain.toString(), -2, u"Le programme d’impression de Pelmora ne fonctionne pas."_s};
}

} // namespace

PrintServer::PrintServer(QString program)
    : m_program(std::move(program))
{
    m_helper.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, &m_helper, &QProcess::kill);
    connect(&m_helper, &QProcess::finished, this, &PrintServer::takeAnswer);
    connect(&m_helper, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        // All other errors end in its end.
        if (error == QProcess::FailedToStart)
            tell(std::unexpected(breakdown()));
    });
}

PrintServer::~PrintServer()
{
    m_tell = nullptr;
    if (!m_isPrinting)
        m_helper.kill();
    wait();
}

void PrintServer::cancel()
{
    m_tell = nullptr;
    m_helper.kill();
}

PrintAnswer PrintServer::askAndWait(const PrintRequest& request)
{
    PrintAnswer answer = std::unexpected(silence());
    ask(request, [&answer](const PrintAnswer& told) { answer = told; });
    wait();
    return answer;
}

void PrintServer::wait()
{
    if (m_helper.waitForFinished(std::max(m_patience.remainingTime(), 0)))
        return;
    m_patience.stop();
    m_helper.kill();
    m_helper.waitForFinished();
}

void PrintServer::ask(const PrintRequest& request, Told tell)
{
    m_isPrinting = request.has_value();
    m_tell = std::move(tell);
    m_patience.start(patience);
    m_helper.start(m_program, QStringList());
    m_helper.write(encodePrintRequest(request));
    m_helper.closeWriteChannel();
}

void PrintServer::takeAnswer()
{
    std::optional<PrintAnswer> answer;
    if (m_helper.exitStatus() == QProcess::NormalExit && m_helper.exitCode() == 0)
        answer = decodePrintAnswer(m_helper.readAllStandardOutput());
    if (!answer)
        answer = std::unexpected(m_patience.isActive() ? breakdown() : silence());
    tell(*answer);
}

void PrintServer::tell(const PrintAnswer& answer)
{
    m_patience.stop();
    if (const Told tell = std::exchange(m_tell, nullptr))
        tell(answer);
}
