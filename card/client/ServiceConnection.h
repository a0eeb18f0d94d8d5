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

/// Receives a reply's body; nullopt stands for whatever is not a dictionary: a null body, a broken or closed
/// connection.
using ServiceReplyHandler = std::move_only_function<void(std::optional<QCborMap>)>;

/// What a connection tells besides replies.
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

/// A request that has no reply yet.
struct WaitingRequest
{
    ServiceReplyHandler handler;
    ChannelClock::time_point deadline;
};

/// A running service with what goes to it and what comes from it. Calls no handler itself. On the channel's thread
/// alone.
class ServiceConnection final
{
public:
    /// What a read of the service's output came to.
    enum class Reading
    {
        Some,
        Nothing,
        Ended
    };

    static constexpr std::size_t pollCount = 4;
    using PollSet = std::array<pollfd, pollCount>;

    ServiceConnection(ServiceProcess process, ChannelEventHandler eventHandler)
        : m_process(std::move(process))
        , m_eventHandler(std::move(eventHandler))
    {
    }

    [[nodiscard]] const ChannelEventHandler& eventHandler() const { return m_eventHandler; }

    /// Numbers the request and sends what the pipe takes of it; the rest goes when the pipe is ready.
    void send(const QCborMap& body, WaitingRequest request);

    /// Takes the request of that number off the list; nullopt when none waits under it.
    [[nodiscard]] std::optional<ServiceReplyHandler> takeRequest(qint64 number);
    /// Takes them all, in the order of their numbers.
    [[nodiscard]] std::map<qint64, WaitingRequest> takeRequests() { return std::exchange(m_waiting, {}); }
    /// When the request that has waited longest has waited too long.
    [[nodiscard]] std::optional<ChannelClock::time_point> firstDeadline() const;

    /// What to wait for.
    [[nodiscard]] PollSet pollSet() const;
    /// Logs and writes what a poll found ready.
    void serveErrorsAndInput(const PollSet& ready);
    /// Whether a poll found output to read, or its end.
    [[nodiscard]] static bool hasOutput(const PollSet& ready);
    /// Whether a poll found that the service has ended or has closed its input.
    [[nodiscard]] static bool isOver(const PollSet& ready);
    /// Reads a bounded slice of output, without waiting.
    [[nodiscard]] Reading readOutput();
    /// The next message of what was read.
    [[nodiscard]] auto nextMessage() { return m_reader.next(); }

    /// Closes the service's input and output and hands it over, with its log, to whoever waits for its end.
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
