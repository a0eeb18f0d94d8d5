#include "service/ServiceLoop.h"

#include "service/MemoryClearing.h"

#include <array>
#include <cerrno>

ServiceLoop::ServiceLoop(ServiceCommands commands, FileDescriptor requests, FileDescriptor replies)
    : m_commands(std::move(commands))
    , m_requests(std::move(requests))
    , m_replies(std::move(replies))
{
}

ServiceLoop::End ServiceLoop::run()
{
    std::array<char, std::size_t{64} * 1024> buffer{};
    for (;;) {
        const ssize_t count = ::read(m_requests.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return End::Failed;
        // An incomplete request at the end is ignored.
        if (count == 0)
            return End::Closed;
        m_reader.append(QByteArrayView(buffer.data(), count));
        if (const std::optional<End> end = answerRequests())
            return *end;
    }
}

std::optional<ServiceLoop::End> ServiceLoop::answerRequests()
{
    for (;;) {
        const std::expected<std::optional<ServiceMessage>, FramingError> next = m_reader.next();
        if (!next)
            return End::Malformed;
        if (!*next)
            return std::nullopt;
        const ServiceMessage& request = **next;
        // Requests count from 1.
        if (request.number < 1)
            return End::Malformed;
        const ServiceMessage reply{.number = request.number,
                                   .body = request.body ? m_commands.answer(*request.body) : std::nullopt};
        const std::optional<End> end = write(encodeServiceMessage(reply));
        // Also when the reply could not be written: the call still hangs.
        if (m_commands.isBeyondUse())
            return End::BeyondUse;
        if (end)
            return end;
        clearUnusedStack();
    }
}

std::optional<ServiceLoop::End> ServiceLoop::write(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t count = ::write(m_replies.get(), bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno == EPIPE ? End::Closed : End::Failed;
        bytes = bytes.sliced(count);
    }
    return std::nullopt;
}
