#pragma once

#include "card/ServiceConnection.h"

#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

/// What the channel's thread runs: its mailbox, the connection, and the helpers that are leaving. The mailbox (tasks,
/// and whether to stop) is shared between threads under its mutex; everything else is touched on the channel's thread
/// alone.
class ChannelLoop final
{
public:
    using Task = std::move_only_function<void()>;

    ChannelLoop(const ServiceCommand& command, ChannelLimits limits);

    /// The thread's whole life.
    void run();

    // Any thread.
    void post(Task task);
    void requestStop();

    // The channel's thread.
    [[nodiscard]] bool isOpen() const { return m_connection != nullptr; }
    [[nodiscard]] std::expected<void, std::error_code> open(ChannelEventHandler eventHandler);
    void close();
    void send(const QCborMap& body, ServiceReplyHandler handler);

private:
    // A connection is kept alive by whoever works on it: a handler may close it meanwhile.
    using ConnectionPointer = std::shared_ptr<ServiceConnection>;

    /// A helper whose input is closed.
    struct LeavingHelper
    {
        HelperProcess process;
        HelperErrorLog errorLog;
        ChannelClock::time_point deadline; // to be killed then or, once it was, to be given up
        bool isKilled = false;
        bool isGone = false;
    };

    void wakeUp() const;
    void silenceWakeUp() const;
    void runTasks();
    [[nodiscard]] bool hasEnded();

    void hurryLeaving();
    [[nodiscard]] std::chrono::milliseconds grace() const;
    void expireRequests();
    void killLateHelpers();
    [[nodiscard]] int patience() const;
    void waitForEvents();
    static void serveLeaving(LeavingHelper& helper, std::span<const pollfd> ready);
    void serve(const ConnectionPointer& connection, const ServiceConnection::PollSet& ready);
    [[nodiscard]] bool deliver(const ConnectionPointer& connection);
    void deliverMessage(const ConnectionPointer& connection, ServiceMessage message);

    void interrupt();
    ConnectionPointer takeConnection();
    static void failRequests(ServiceConnection& connection);

    // Plain texts: nothing is shared with the command that was given, which belongs to another thread.
    const std::vector<std::string> m_command;
    const ChannelLimits m_limits;
    const FileDescriptor m_wakeUp; // an event counter: readable when the mailbox has something new

    std::mutex m_mutex;
    std::vector<Task> m_tasks;
    bool m_stopRequested = false;
    bool m_ended = false;

    bool m_isStopping = false;
    ConnectionPointer m_connection;
    std::vector<LeavingHelper> m_leaving;
};
