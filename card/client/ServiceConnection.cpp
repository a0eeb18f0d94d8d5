#include "card/client/ServiceConnection.h"

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace {

// Indices of the poll set.
enum : std::size_t
{
    Input,
    Output,
    Errors,
    EndOfProcess
};

constexpr std::size_t sliceSize = std::size_t{64} * 1024; // the size of a pipe

} // namespace

void ServiceConnection::send(const QCborMap& body, WaitingRequest request)
{
    const qint64 number = ++m_lastNumber;
    m_waiting.emplace(number, std::move(request));
    m_unsent.append(encodeServiceMessage({.number = number, .body = body}));
    writeUnsent();
}

/// A failed write is ignored: poll reports the same failure after the service's last output has been read.
void ServiceConnection::writeUnsent()
{
    while (m_unsentStart < m_unsent.size()) {
        const QByteArrayView rest = QByteArrayView(m_unsent).sliced(m_unsentStart);
        const ssize_t count = write(m_process.standardInput(), rest.data(), static_cast<std::size_t>(rest.size()));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return;
        m_unsentStart += count;
    }
    m_unsent.clear();
    m_unsentStart = 0;
}

std::optional<ServiceReplyHandler> ServiceConnection::takeRequest(qint64 number)
{
    auto node = m_waiting.extract(number);
    if (node.empty())
        return std::nullopt;
    return std::move(node.mapped().handler);
}

std::optional<ChannelClock::time_point> ServiceConnection::firstDeadline() const
{
    // The time limit is the same for all, so the lowest number has the first deadline.
    if (m_waiting.empty())
        return std::nullopt;
    return m_waiting.begin()->second.deadline;
}

ServiceConnection::PollSet ServiceConnection::pollSet() const
{
    const bool hasUnsent = m_unsentStart < m_unsent.size();
    PollSet set{};
    set[Input] = {.fd = m_process.standardInput(), .events = hasUnsent ? short{POLLOUT} : short{0}, .revents = 0};
    set[Output] = {.fd = m_process.standardOutput(), .events = POLLIN, .revents = 0};
    set[Errors] = {.fd = m_process.standardError(), .events = POLLIN, .revents = 0};
    set[EndOfProcess] = {.fd = m_process.endOfProcess(), .events = POLLIN, .revents = 0};
    return set;
}

void ServiceConnection::serveErrorsAndInput(const PollSet& ready)
{
    if (ready[Errors].revents != 0 && m_errorLog.read(m_process.standardError()) == ServiceErrorLog::Reading::Ended)
        m_process.closeStandardError();
    if ((ready[Input].revents & POLLOUT) != 0)
        writeUnsent();
}

bool ServiceConnection::hasOutput(const PollSet& ready)
{
    return ready[Output].revents != 0;
}

bool ServiceConnection::isOver(const PollSet& ready)
{
    return (ready[Input].revents & POLLERR) != 0 || ready[EndOfProcess].revents != 0;
}

ServiceConnection::Reading ServiceConnection::readOutput()
{
    std::array<char, sliceSize> slice; // NOLINT(cppcoreguidelines-pro-type-member-init): read fills what is used
    const ssize_t count = read(m_process.standardOutput(), slice.data(), slice.size());
    if (count > 0) {
        m_reader.append({slice.data(), count});
        return Reading::Some;
    }
    return count < 0 && (errno == EAGAIN || errno == EINTR) ? Reading::Nothing : Reading::Ended;
}

std::pair<ServiceProcess, ServiceErrorLog> ServiceConnection::leave()
{
    m_process.closeStandardInput();
    m_process.closeStandardOutput();
    return {std::move(m_process), std::move(m_errorLog)};
}
