#pragma once

#include "card/client/ChannelLimits.h"
#include "card/client/LogLimit.h"
#include "card/client/ServiceConnection.h"

#include <condition_variable>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

/// What the channel's thread runs: its mailbox, the connection, and the services that are leaving. The mailbox (tasks,
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

    /// A service whose input is closed.
    struct LeavingService
    {
        ServiceProcess process;
        ServiceErrorLog errorLog;
        ChannelClock::time_point deadline; // to be killed then or, once it was, to be given up
        bool wasAsked = false;             // to leave, by the client: it ends as it should with the exit status 0
        bool isKilled = false;
        bool isGone = false;
    };

    void wakeUp(int counter);
    void silenceWakeUp() const;
    [[nodiscard]] std::expected<void, std::error_code> makeWakeUp();
    void runTasks();
    [[nodiscard]] bool hasEnded();

    void hurryLeaving();
    [[nodiscard]] std::chrono::milliseconds grace() const;
    void expireRequests();
    void killLateServices();
    [[nodiscard]] int patience() const;
    void waitForMailbox();
    void waitForEvents();
    void giveUpPolling(std::error_code reason);
    static void tellEnd(const LeavingService& service);
    static void seeOff(LeavingService& service);
    static void serveLeaving(LeavingService& service, std::span<const pollfd> ready);
    void serve(const ConnectionPointer& connection, const ServiceConnection::PollSet& ready);
    [[nodiscard]] bool deliver(const ConnectionPointer& connection);
    void deliverMessage(const ConnectionPointer& connection, ServiceMessage message);

    void interrupt();
    ConnectionPointer takeConnection(bool isAsked);
    static void failRequests(ServiceConnection& connection);

    // Plain texts: nothing is shared with the command that was given, which belongs to another thread.
    const std::vector<std::string> m_command;
    const ChannelLimits m_limits;

    std::mutex m_mutex;
    // What wakes the thread when the mailbox has something new: the condition as long as there was nothing else to wait
    // for, then the event counter, which poll can wait for. It is made with the first connection, and can fail with it.
    std::condition_variable m_mailboxChanged;
    FileDescriptor m_wakeUp;
    std::vector<Task> m_tasks;
    bool m_stopRequested = false;
    bool m_ended = false;

    bool m_isStopping = false;
    ConnectionPointer m_connection;
    std::vector<LeavingService> m_leaving;
    LogLimit m_strayReplies{MXLog::Warning, ChannelLogLines::strayReplies};
};
