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

/// The channel to a card service program, and the thread that all its work is done on. Any thread may post tasks; every
/// other operation belongs in such a task, and every handler is called on the channel's thread. One connection at a
/// time.
class ServiceChannel final
{
public:
    using Task = std::move_only_function<void()>;

    explicit ServiceChannel(const ServiceCommand& command, ChannelLimits limits = {});
    ServiceChannel(const ServiceChannel&) = delete;
    ServiceChannel& operator=(const ServiceChannel&) = delete;
    /// Does what stop() does. On the channel's own thread (a handler drops its last owner) nothing is waited for: the
    /// thread finishes its work alone.
    ~ServiceChannel();

    /// Runs the task on the channel's thread, in the order of the calls. Any thread.
    void post(Task task);

    /// Ends the channel: what was posted is run (and can connect no more), what waits gets its reply that is none, the
    /// services leave or are killed after the grace of a stop. Then the thread is joined. Once only, not on the
    /// channel's own thread; tasks that are posted afterwards are dropped.
    void stop();

    [[nodiscard]] bool isOpen() const;

    /// Starts the card service program. Nothing when it is there already.
    [[nodiscard]] std::expected<void, std::error_code> open(ChannelEventHandler eventHandler);

    /// Closes the connection, if there is one: requests that wait get their reply that is none; the service is ended
    /// in the background.
    void close();

    /// Sends a request on the open connection. The handler is called exactly once; without a connection at once.
    void send(const QCborMap& body, ServiceReplyHandler handler);

private:
    // Shared with the thread, which may outlive this object when it is destroyed there.
    std::shared_ptr<ChannelLoop> m_loop;
    std::thread m_thread;
};
