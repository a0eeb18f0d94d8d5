#pragma once

#include "service/pcsc/PcscContext.h"
#include "service/pcsc/ReaderEvents.h"
#include "service/pcsc/SocketAppearance.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>

/// Changes as PC/SC tells them, with its own connection, so that reads and the watch do not wait for each other.
/// Nothing is asked repeatedly: PC/SC answers when a reader or card comes or goes. While there is no PC/SC service, a
/// new attempt is made when something changes in the folder of its socket, and every half minute.
class PcscEvents final : public ReaderEvents
{
public:
    explicit PcscEvents(const QByteArray& socketPath);

    [[nodiscard]] std::optional<Readers> next() override;
    void cancel() override;

private:
    [[nodiscard]] std::expected<void, CardFault> connect();
    [[nodiscard]] bool establish();
    [[nodiscard]] Readers changedReaders();
    [[nodiscard]] std::expected<bool, CardFault> listReaders();
    [[nodiscard]] QList<WatchedReader> watchedReaders() const;
    void disconnect();

    SocketAppearance m_socket;
    FileDescriptor m_stop; // an event counter, readable after cancel()
    std::atomic<bool> m_isCancelled = false;
    bool m_isAway = false; // the last attempt to connect has failed
    CardFault m_fault = CardFault::ServiceDown;

    std::mutex m_contextMutex; // held when the context is replaced and when it is cancelled
    std::optional<PcscContext> m_context;
    QList<KnownReader> m_known;
    bool m_hasAnswered = false; // since the connection was made
    bool m_isQuiet = false;     // no reader has changed for a while
};
