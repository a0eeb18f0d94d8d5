#include "service/ServiceLoop.h"

#include "service/MemoryClearing.h"

#include <array>
#include <cerrno>
#include <mutex>

/// The application's side of the channel. Two threads write to it, each a whole message at a time.
class ServiceLoop::Output final
{
public:
    explicit Output(FileDescriptor descriptor)
        : m_descriptor(std::move(descriptor))
    {
    }

    std::optional<End> write(const ServiceMessage& message)
    {
        const QByteArray encoded = encodeServiceMessage(message);
        QByteArrayView bytes = encoded;
        const std::lock_guard lock(m_mutex);
        while (!bytes.isEmpty()) {
            const ssize_t count = ::write(m_descriptor.get(), bytes.data(), static_cast<std::size_t>(bytes.size()));
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                return errno == EPIPE ? End::Closed : End::Failed;
            bytes = bytes.sliced(count);
        }
        return std::nullopt;
    }

private:
    std::mutex m_mutex;
    FileDescriptor m_descriptor;
};

ServiceLoop::ServiceLoop(ServiceCommands commands, FileDescriptor requests, FileDescriptor replies)
    : m_output(std::make_shared<Output>(std::move(replies)))
    , m_commands(std::move(commands))
    , m_requests(std::move(requests))
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
        const std::optional<End> end = m_output->write(reply);
        // Also when the reply could not be written: the call still hangs.
        if (m_commands.isBeyondUse())
            return End::BeyondUse;
        if (end)
            return end;
        // After the reply. A failed write is noticed at the end of the requests or at the next reply.
        m_commands.watchReader([output = m_output](CardReaderState state) {
            [[maybe_unused]] const auto failure = output->write({.number = 0, .body = readerMessage(state)});
        });
        if (m_commands.isBeyondUse())
            return End::BeyondUse;
        clearUnusedStack();
    }
}
