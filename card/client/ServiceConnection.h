#pragma once

#include "card/client/ServiceErrorLog.h"
#include "card/client/ServiceProcess.h"
#include "card/wire/ServiceMessage.h"
#include "card/wire/ServiceVocabulary.h"

#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <optional>

#include <poll.h>

using ChannelClock = std::chrono::steady_clock;

/// Receives a reply's body; nullopt for a body that is not a dictionary and for a closed connection.
using ServiceReplyHandler = std::move_only_function<void(std::optional<QCborMap>)>;

/// Events besides replies.
struct ChannelEvent
{
    enum class Kind
    {
        Interrupted,
        UnsolicitedMessage
    };
    Kind kind = Kind::Interrupted;
    QCborMap message;
};
using ChannelEventHandler = std::function<void(const ChannelEvent&)>;

struct WaitingRequest
{
    ServiceReplyHandler handler;
    ChannelClock::time_point deadline;
};

/// A running service, its requests and its output. Calls no handlers. Used on the channel's thread only.
class ServiceConnection final
{
public:
    using Reading = ServiceErrorLog::Reading;

    static constexpr std::size_t pollCount = 4;
    using PollSet = std::array<pollfd, pollCount>;

    ServiceConnection(ServiceProcess process, ChannelEventHandler eventHandler)
        : m_process(std::move(process))
        , m_eventHandler(std::move(eventHandler))
    {
    }

    [[nodiscard]] const ChannelEventHandler& eventHandler() const { return m_eventHandler; }

    /// Numbers the request and writes as much as the pipe takes; the rest is written when the pipe is ready.
    void send(const QCborMap& body, WaitingRequest request);

    /// Removes the request with that number; nullopt when there is none.
    [[nodiscard]] std::optional<ServiceReplyHandler> takeRequest(qint64 number);
    /// Removes all requests, in the order of their numbers.
    [[nodiscard]] std::map<qint64, WaitingRequest> takeRequests() { return std::exchange(m_waiting, {}); }
    /// The deadline of the oldest request.
    [[nodiscard]] std::optional<ChannelClock::time_point> firstDeadline() const;

    [[nodiscard]] PollSet pollSet() const;
    /// Reads the error output and writes requests, as far as poll found them ready.
    void serveErrorsAndInput(const PollSet& ready);
    /// Whether there is output to read, or its end.
    [[nodiscard]] static bool hasOutput(const PollSet& ready);
    /// Whether the service has exited or closed its input.
    [[nodiscard]] static bool isOver(const PollSet& ready);
    /// Reads one slice of output without waiting.
    [[nodiscard]] Reading readOutput();
    /// The next complete message.
    [[nodiscard]] auto nextMessage() { return m_reader.next(); }

    /// Closes the service's input and output, and gives its process and error log away.
    [[nodiscard]] std::pair<ServiceProcess, ServiceErrorLog> leave();

private:
    void writeUnsent();

    ServiceProcess m_process;
    ServiceErrorLog m_errorLog;
    ServiceMessageReader m_reader{ServiceWord::replyKeys};
    QByteArray m_unsent;
    qsizetype m_unsentStart = 0;
    qint64 m_lastNumber = 0;
    std::map<qint64, WaitingRequest> m_waiting;
    ChannelEventHandler m_eventHandler;
};
