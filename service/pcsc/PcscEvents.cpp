#include "service/pcsc/PcscEvents.h"

#include <algorithm>

#include <sys/eventfd.h>

using namespace std::chrono_literals;

namespace {

// Only for a service whose socket's folder cannot be watched, or that is ready later than its socket.
constexpr std::chrono::milliseconds absenceLimit = 30s;
// PC/SC tells that the number of readers has changed since it was asked to wait. A reader that came just before, after
// the list, is found by listing them again this long after each change.
constexpr std::chrono::milliseconds quietDelay = 1s;

} // namespace

PcscEvents::PcscEvents(const QByteArray& socketPath)
    : m_socket(socketPath)
    , m_stop(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

std::optional<ReaderEvents::Readers> PcscEvents::next()
{
    // A service that has ended may have been replaced already: one attempt is made before it is reported as absent.
    for (bool isFirst = true; !m_isCancelled; isFirst = false) {
        const std::expected<void, CardFault> connected = connect();
        if (m_isCancelled)
            break;
        if (!connected)
            return std::unexpected(connected.error());
        Readers readers = changedReaders();
        if (m_isCancelled)
            break;
        if (readers) {
            m_hasAnswered = true;
            return readers;
        }
        const bool isWorthAnotherAttempt = isFirst && m_hasAnswered;
        disconnect();
        if (!isWorthAnotherAttempt) {
            m_socket.arm();
            m_isAway = true;
            return readers;
        }
    }
    return std::nullopt;
}

void PcscEvents::cancel()
{
    m_isCancelled = true;
    const std::uint64_t one = 1;
    // It fails only when the counter is at its maximum, which can be read as well.
    [[maybe_unused]] const ssize_t written = ::write(m_stop.get(), &one, sizeof one);
    const std::lock_guard lock(m_contextMutex);
    if (m_context)
        m_context->cancel();
}

/// Connects, after waiting for a change if the last attempt has failed.
std::expected<void, CardFault> PcscEvents::connect()
{
    if (m_context)
        return {};
    if (m_isAway) {
        m_socket.wait(m_stop.get(), absenceLimit);
        m_socket.arm();
    }
    if (m_isCancelled || establish())
        return {};
    // The service may have come before changes were noticed.
    if (!m_isAway) {
        m_socket.arm();
        if (establish())
            return {};
    }
    m_isAway = true;
    return std::unexpected(m_fault);
}

bool PcscEvents::establish()
{
    std::expected<PcscContext, CardFault> context = PcscContext::establish();
    if (!context) {
        m_fault = context.error();
        return false;
    }
    const std::lock_guard lock(m_contextMutex);
    m_context.emplace(*std::move(context));
    m_isAway = false;
    return true;
}

void PcscEvents::disconnect()
{
    const std::lock_guard lock(m_contextMutex);
    m_context.reset();
    m_known.clear();
    m_hasAnswered = false;
    m_isQuiet = false;
}

/// Waits for a change of the readers.
ReaderEvents::Readers PcscEvents::changedReaders()
{
    while (!m_isCancelled) {
        const std::expected<bool, CardFault> listed = listReaders();
        if (!listed)
            return std::unexpected(listed.error());
        const bool isNew = *listed || !m_hasAnswered;
        std::optional<std::chrono::milliseconds> longest;
        if (isNew)
            longest = 0ms;
        else if (!m_isQuiet)
            longest = quietDelay;
        const std::expected<bool, CardFault> changed = m_context->waitForChange(m_known, longest);
        if (!changed)
            return std::unexpected(changed.error());
        m_isQuiet = !*changed && !isNew;
        if (*changed || isNew)
            break;
    }
    return watchedReaders();
}

/// Brings the known readers up to date. Whether a reader has come or gone.
std::expected<bool, CardFault> PcscEvents::listReaders()
{
    const std::expected<QList<QByteArray>, CardFault> names = m_context->readers();
    if (!names)
        return std::unexpected(names.error());
    if (std::ranges::equal(*names, m_known, {}, {}, &KnownReader::name))
        return false;
    QList<KnownReader> listed;
    for (const QByteArray& name : *names) {
        const auto known = std::ranges::find(m_known, name, &KnownReader::name);
        listed.append(known == m_known.end() ? KnownReader{.name = name} : *known);
    }
    m_known = std::move(listed);
    return true;
}

QList<WatchedReader> PcscEvents::watchedReaders() const
{
    QList<WatchedReader> readers;
    for (const KnownReader& known : m_known)
        readers.append(known.watched());
    return readers;
}
