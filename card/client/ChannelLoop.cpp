#include "card/client/ChannelLoop.h"

#include "support/MXLog.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace {

// A pipe holds a mebibyte at most. The limit matters only when a child of the ended service still writes.
constexpr int maximumLastSlices = 32;

/// Leaves signals to the main thread. A write to a service that has ended must fail with an error (SIGPIPE).
void blockSignals()
{
    sigset_t signals{};
    sigfillset(&signals);
    for (const int ownFault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
        sigdelset(&signals, ownFault);
    pthread_sigmask(SIG_SETMASK, &signals, nullptr);
}

// Pause before the next poll after a failed one, so that the loop does not use the processor.
constexpr auto restAfterFailedPoll = std::chrono::milliseconds(100);

} // namespace

ChannelLoop::ChannelLoop(const ServiceCommand& command, ChannelLimits limits)
    : m_command(systemArguments(command))
    , m_limits(limits)
{
}

void ChannelLoop::run()
{
    blockSignals();
    while (true) {
        runTasks();
        expireRequests();
        killLateServices();
        if (hasEnded())
            return;
        waitForEvents();
    }
}

void ChannelLoop::post(Task task)
{
    bool isFirst = false;
    int counter = -1;
    {
        const std::scoped_lock lock(m_mutex);
        if (m_ended)
            return; // the task is destroyed by the caller, outside of the lock
        isFirst = m_tasks.empty();
        counter = m_wakeUp.get();
        m_tasks.push_back(std::move(task));
    }
    if (isFirst)
        wakeUp(counter);
}

void ChannelLoop::requestStop()
{
    int counter = -1;
    {
        const std::scoped_lock lock(m_mutex);
        m_stopRequested = true;
        counter = m_wakeUp.get();
    }
    wakeUp(counter);
}

/// Without a counter the thread waits for the condition. A later counter counts tasks that are waiting.
void ChannelLoop::wakeUp(int counter)
{
    if (counter < 0) {
        m_mailboxChanged.notify_one();
        return;
    }
    // It fails only when the counter is at its maximum, which also wakes the thread.
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(counter, &one, sizeof one);
}

void ChannelLoop::silenceWakeUp() const
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = read(m_wakeUp.get(), &count, sizeof count);
}

std::expected<void, std::error_code> ChannelLoop::makeWakeUp()
{
    const std::scoped_lock lock(m_mutex);
    if (!m_wakeUp.isValid())
        m_wakeUp = FileDescriptor(eventfd(m_tasks.empty() && !m_stopRequested ? 0 : 1, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!m_wakeUp.isValid())
        return std::unexpected(std::error_code(errno, std::system_category()));
    return {};
}

/// Runs the queued tasks. Tasks that these post run after the next poll.
void ChannelLoop::runTasks()
{
    std::vector<Task> tasks;
    {
        const std::scoped_lock lock(m_mutex);
        tasks.swap(m_tasks);
        m_isStopping = m_stopRequested;
    }
    if (m_isStopping) {
        close();
        hurryLeaving();
    }
    for (Task& task : tasks) {
        task();
        // Destroys what the task owns before the next one runs.
        task = nullptr;
    }
}

bool ChannelLoop::hasEnded()
{
    if (!m_isStopping || !m_leaving.empty())
        return false;
    const std::scoped_lock lock(m_mutex);
    m_ended = m_tasks.empty();
    return m_ended;
}

std::expected<void, std::error_code> ChannelLoop::open(ChannelEventHandler eventHandler)
{
    if (m_connection)
        return {};
    if (m_isStopping)
        return std::unexpected(std::make_error_code(std::errc::operation_canceled));
    if (const auto made = makeWakeUp(); !made)
        return made;
    auto process = ServiceProcess::start(m_command);
    if (!process)
        return std::unexpected(process.error());
    m_connection = std::make_shared<ServiceConnection>(std::move(*process), std::move(eventHandler));
    return {};
}

void ChannelLoop::close()
{
    if (const ConnectionPointer connection = takeConnection(true))
        failRequests(*connection);
}

void ChannelLoop::send(const QCborMap& body, ServiceReplyHandler handler)
{
    if (m_connection)
        m_connection->send(body, {std::move(handler), ChannelClock::now() + m_limits.requestTimeout});
    else
        handler(std::nullopt);
}

/// Closes a broken connection, tells its event handler, then fails its requests.
void ChannelLoop::interrupt()
{
    if (const ConnectionPointer connection = takeConnection(false)) {
        connection->eventHandler()({.kind = ChannelEvent::Kind::Interrupted, .message = {}});
        failRequests(*connection);
    }
}

/// Ends the connection before handlers are called, so that these find none. Its service is exiting from then on.
ChannelLoop::ConnectionPointer ChannelLoop::takeConnection(bool isAsked)
{
    m_strayReplies.tellLeftOut();
    ConnectionPointer connection = std::exchange(m_connection, nullptr);
    if (connection) {
        auto [process, errorLog] = connection->leave();
        m_leaving.push_back({.process = std::move(process),
                             .errorLog = std::move(errorLog),
                             .deadline = ChannelClock::now() + grace(),
                             .wasAsked = isAsked});
    }
    return connection;
}

void ChannelLoop::failRequests(ServiceConnection& connection)
{
    for (auto& [number, request] : connection.takeRequests())
        request.handler(std::nullopt);
}

std::chrono::milliseconds ChannelLoop::grace() const
{
    return m_isStopping ? std::min(m_limits.stopGrace, m_limits.exitGrace) : m_limits.exitGrace;
}

/// Limits the time of services that were exiting before the stop to the grace of the stop.
void ChannelLoop::hurryLeaving()
{
    const auto latest = ChannelClock::now() + grace();
    for (LeavingService& service : m_leaving)
        service.deadline = std::min(service.deadline, latest);
}

void ChannelLoop::expireRequests()
{
    if (!m_connection || m_connection->firstDeadline().value_or(ChannelClock::time_point::max()) > ChannelClock::now())
        return;
    MXLog::logWarning("Card service: no reply within {} ms", m_limits.requestTimeout.count());
    interrupt();
}

void ChannelLoop::killLateServices()
{
    const auto now = ChannelClock::now();
    for (LeavingService& service : m_leaving) {
        if (service.deadline > now)
            continue;
        seeOff(service);
        if (!service.isGone && service.isKilled) {
            // A process that survives SIGKILL is blocked in the kernel and ends when the device answers.
            MXLog::logWarning("The card service could not be ended: the system holds it in a call");
            service.isGone = true;
        }
        service.process.kill();
        service.isKilled = true;
        service.deadline = now + grace();
    }
    std::erase_if(m_leaving, [](const LeavingService& service) { return service.isGone; });
}

/// Milliseconds until the next deadline, rounded up; -1 for none.
int ChannelLoop::patience() const
{
    auto due = ChannelClock::time_point::max();
    if (m_connection)
        due = m_connection->firstDeadline().value_or(due);
    for (const LeavingService& service : m_leaving)
        due = std::min(due, service.deadline);
    if (due == ChannelClock::time_point::max())
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - ChannelClock::now());
    return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 3'600'000));
}

void ChannelLoop::waitForMailbox()
{
    std::unique_lock lock(m_mutex);
    m_mailboxChanged.wait(lock, [this] { return !m_tasks.empty() || m_stopRequested; });
}

/// poll failed: too many descriptors, or no memory. Closing the connection reduces what is polled.
void ChannelLoop::giveUpPolling(std::error_code reason)
{
    if (m_connection)
        MXLog::logWarning("Card service: poll: {}", reason.message());
    interrupt();
    std::this_thread::sleep_for(restAfterFailedPoll);
}

void ChannelLoop::waitForEvents()
{
    // Without a counter there was no connection, so nothing else to poll.
    if (!m_wakeUp.isValid()) {
        waitForMailbox();
        return;
    }
    constexpr std::size_t perLeaving = 2;
    std::vector<pollfd> set{{.fd = m_wakeUp.get(), .events = POLLIN, .revents = 0}};
    for (const LeavingService& service : m_leaving) {
        set.push_back({.fd = service.process.standardError(), .events = POLLIN, .revents = 0});
        set.push_back({.fd = service.process.endOfProcess(), .events = POLLIN, .revents = 0});
    }
    if (m_connection)
        std::ranges::copy(m_connection->pollSet(), std::back_inserter(set));

    const int count = poll(set.data(), set.size(), patience());
    if (count < 0 && errno != EINTR)
        giveUpPolling({errno, std::system_category()});
    if (count <= 0)
        return;

    const std::span<const pollfd> ready(set);
    if (ready.front().revents != 0)
        silenceWakeUp();
    for (std::size_t index = 0; index < m_leaving.size(); ++index)
        serveLeaving(m_leaving[index], ready.subspan(1 + index * perLeaving, perLeaving));
    std::erase_if(m_leaving, [](const LeavingService& service) { return service.isGone; });

    // Last, because its handlers may open and close connections.
    if (const ConnectionPointer connection = m_connection) {
        ServiceConnection::PollSet connectionReady{};
        std::ranges::copy(ready.last(connectionReady.size()), connectionReady.begin());
        serve(connection, connectionReady);
    }
}

void ChannelLoop::tellEnd(const LeavingService& service)
{
    const std::optional<ProcessEnd>& end = service.process.howItEnded();
    if (!end)
        MXLog::logNotice("The card service ended: how, the system does not tell");
    else if (service.isKilled)
        MXLog::logWarning("The card service ended: {}, as it had not left by itself", end->description());
    else if (!service.wasAsked || end->signal || end->exitStatus != 0)
        MXLog::logWarning("The card service ended: {}", end->description());
}

/// Logs the last output and the end of a service that has exited; does nothing while it runs.
void ChannelLoop::seeOff(LeavingService& service)
{
    service.isGone = service.process.reap();
    if (!service.isGone)
        return;
    // The service's output is in the pipe by now. The loop does not wait for the pipe's end: a child may keep it open.
    service.errorLog.readLastWords(service.process.standardError(), maximumLastSlices);
    tellEnd(service);
}

void ChannelLoop::serveLeaving(LeavingService& service, std::span<const pollfd> ready)
{
    if (ready[1].revents != 0) {
        seeOff(service);
    } else if (ready[0].revents != 0 &&
               service.errorLog.read(service.process.standardError()) == ServiceErrorLog::Reading::Ended) {
        service.process.closeStandardError();
    }
}

void ChannelLoop::serve(const ConnectionPointer& connection, const ServiceConnection::PollSet& ready)
{
    connection->serveErrorsAndInput(ready);
    const bool isOver = ServiceConnection::isOver(ready);
    if (!isOver && !ServiceConnection::hasOutput(ready))
        return;

    // One slice at a time, so that much output does not delay tasks and time limits. The output of a service that has
    // exited is read to its end: its last replies still count.
    int slices = isOver ? maximumLastSlices : 1;
    auto reading = ServiceConnection::Reading::Some;
    bool isReadable = true;
    while (slices-- > 0 && reading == ServiceConnection::Reading::Some && isReadable && m_connection == connection) {
        reading = connection->readOutput();
        isReadable = deliver(connection);
    }
    const bool isBroken = isOver || !isReadable || reading == ServiceConnection::Reading::Ended;
    if (isBroken && m_connection == connection)
        interrupt();
}

/// Delivers the messages that have arrived. False when the stream is malformed.
bool ChannelLoop::deliver(const ConnectionPointer& connection)
{
    while (m_connection == connection) {
        auto message = connection->nextMessage();
        if (!message) {
            MXLog::logWarning("Card service: {}", message.error() == FramingError::TooLarge
                                                      ? "message over the maximum size"
                                                      : "malformed message");
            return false;
        }
        if (!*message)
            return true;
        deliverMessage(connection, std::move(**message));
    }
    return true;
}

void ChannelLoop::deliverMessage(const ConnectionPointer& connection, ServiceMessage message)
{
    if (message.number == 0) {
        if (message.body)
            connection->eventHandler()({.kind = ChannelEvent::Kind::UnsolicitedMessage, .message = *message.body});
        return;
    }
    std::optional<ServiceReplyHandler> handler = connection->takeRequest(message.number);
    if (handler)
        (*handler)(std::move(message.body));
    else if (m_strayReplies.admits())
        MXLog::logWarning("Card service: reply to request {}, which does not wait", message.number);
}
