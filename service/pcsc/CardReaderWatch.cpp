#include "service/pcsc/CardReaderWatch.h"

#include "card/wire/ReaderModel.h"
#include "service/ReaderNames.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds longestStop = 1s;
constexpr std::chrono::milliseconds cancelInterval = 20ms;

/// The connected readers of the accepted model.
QList<WatchedReader> acceptedReaders(const QList<WatchedReader>& readers)
{
    QList<WatchedReader> accepted;
    for (const WatchedReader& reader : readers) {
        if (reader.isConnected && readerNames({reader.name}).constFirst().model == acceptedReader)
            accepted.append(reader);
    }
    return accepted;
}

bool hasReadableCard(const WatchedReader& reader)
{
    return reader.hasCard && !reader.isMute;
}

/// Whether one of the readers has a card that was not in it before.
bool hasNewCard(const QList<WatchedReader>& readers, const QList<WatchedReader>& before)
{
    return std::ranges::any_of(readers, [&before](const WatchedReader& reader) {
        const auto earlier = std::ranges::find(before, reader.name, &WatchedReader::name);
        return hasReadableCard(reader) &&
               (earlier == before.end() || !hasReadableCard(*earlier) || earlier->movements != reader.movements);
    });
}

} // namespace

CardReaderState cardReaderState(const ReaderEvents::Readers& readers)
{
    if (!readers)
        return CardReaderState::NoService;
    const QList<WatchedReader> accepted = acceptedReaders(*readers);
    if (std::ranges::any_of(accepted, hasReadableCard))
        return CardReaderState::Card;
    if (std::ranges::any_of(accepted, &WatchedReader::hasCard))
        return CardReaderState::MuteCard;
    if (!accepted.isEmpty())
        return CardReaderState::Empty;
    return std::ranges::any_of(*readers, &WatchedReader::isConnected) ? CardReaderState::OtherReader
                                                                      : CardReaderState::NoReader;
}

/// The thread's work. Whether it has ended is shared under the mutex; the rest belongs to the thread.
class CardReaderWatch::Loop final
{
public:
    Loop(std::unique_ptr<ReaderEvents> events, ReaderReport report)
        : m_events(std::move(events))
        , m_report(std::move(report))
    {
    }

    /// The thread's function.
    void run()
    {
        while (const std::optional<ReaderEvents::Readers> readers = m_events->next())
            tell(*readers);
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        m_changed.notify_all();
    }

    /// Whether the thread ends in time.
    [[nodiscard]] bool stop()
    {
        const auto end = std::chrono::steady_clock::now() + longestStop;
        std::unique_lock lock(m_mutex);
        while (!m_hasEnded && std::chrono::steady_clock::now() < end) {
            lock.unlock();
            m_events->cancel();
            lock.lock();
            m_changed.wait_for(lock, cancelInterval, [this] { return m_hasEnded; });
        }
        return m_hasEnded;
    }

private:
    void tell(const ReaderEvents::Readers& readers)
    {
        const CardReaderState state = cardReaderState(readers);
        QList<WatchedReader> accepted = readers ? acceptedReaders(*readers) : QList<WatchedReader>();
        if (state == CardReaderState::Card && m_state == state && hasNewCard(accepted, m_accepted)) {
            m_report(CardReaderState::Empty);
            m_report(state);
        } else if (m_state != state) {
            m_report(state);
        }
        m_state = state;
        m_accepted = std::move(accepted);
    }

    std::unique_ptr<ReaderEvents> m_events;
    ReaderReport m_report;
    std::optional<CardReaderState> m_state; // the last one reported
    QList<WatchedReader> m_accepted;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_hasEnded = false;
};

CardReaderWatch::CardReaderWatch(std::unique_ptr<ReaderEvents> events, ReaderReport report)
    : m_loop(std::make_shared<Loop>(std::move(events), std::move(report)))
    , m_thread([loop = m_loop] { loop->run(); })
{
}

CardReaderWatch::~CardReaderWatch()
{
    if (m_loop->stop())
        m_thread.join();
    else
        m_thread.detach();
}
