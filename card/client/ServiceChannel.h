#pragma once

#include "card/client/ChannelLimits.h"
#include "card/client/ServiceConnection.h"
#include "card/client/ServiceProcess.h"

#include <expected>
#include <functional>
#include <memory>
#include <system_error>
#include <thread>

class ChannelLoop;

/// The channel to a card service program, with its own thread. Tasks may be posted from any thread; the other
/// operations are called in such tasks, and handlers run on the channel's thread. One connection at a time.
class ServiceChannel final
{
public:
    using Task = std::move_only_function<void()>;

    explicit ServiceChannel(const ServiceCommand& command, ChannelLimits limits = {});
    ServiceChannel(const ServiceChannel&) = delete;
    ServiceChannel& operator=(const ServiceChannel&) = delete;
    /// Calls stop(). On the channel's own thread (a handler destroyed the last owner) the thread finishes alone.
    ~ServiceChannel();

    /// Runs the task on the channel's thread, in the order of the calls. Any thread.
    void post(Task task);

    /// Runs the posted tasks, which can no longer connect, answers waiting requests with "no reply", ends the services
    /// within the grace of a stop, and joins the thread. Called once, not on the channel's own thread.
    void stop();

    [[nodiscard]] bool isOpen() const;

    /// Starts the card service program, unless it is running.
    [[nodiscard]] std::expected<void, std::error_code> open(ChannelEventHandler eventHandler);

    /// Answers waiting requests with "no reply", and ends the service in the background.
    void close();

    /// Sends a request. The handler is called exactly once, and at once when there is no connection.
    void send(const QCborMap& body, ServiceReplyHandler handler);

private:
    // Shared with the thread, which may outlive this object.
    std::shared_ptr<ChannelLoop> m_loop;
    std::thread m_thread;
};
