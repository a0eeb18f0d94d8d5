#pragma once

#include "card/client/ChannelLimits.h"
#include "card/client/LogLimit.h"
#include "card/client/ServiceConnection.h"

#include <condition_variable>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <system_error>
#include <vector>

/// The work of the channel's thread: its task queue, the connection, and services that are exiting. Tasks and stop
/// request are shared between threads under the mutex; everything else belongs to the channel's thread.
class ChannelLoop final
{
public:
    using Task = std::move_only_function<void()>;

    ChannelLoop(const ServiceCommand& command, ChannelLimits limits);

    /// The thread's function.
    void run();

    // Callable from any thread.
    void post(Task task);
    void requestStop();

    // Callable on the channel's thread only.
    [[nodiscard]] bool isOpen() const { return m_connection != nullptr; }
    [[nodiscard]] std::expected<void, std::error_code> open(ChannelEventHandler eventHandler);
    void close();
    void send(const QCborMap& body, ServiceReplyHandler handler);

private:
    // Shared: a handler may close the connection while it is in use.
    using ConnectionPointer = std::shared_ptr<ServiceConnection>;

    /// A service whose input was closed and that has not exited yet.
    struct LeavingService
    {
        ServiceProcess process;
        ServiceErrorLog errorLog;
        ChannelClock::time_point deadline; // then it is killed or, if it was killed, given up
        bool wasAsked = false;             // the client closed its input: exit status 0 is expected
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

    // A copy of the command, which belongs to another thread.
    const std::vector<std::string> m_command;
    const ChannelLimits m_limits;

    std::mutex m_mutex;
    // The thread waits for the condition until the first connection, then for the event counter, which poll can watch.
    // The counter is made with the first connection, which fails when that is not possible.
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
