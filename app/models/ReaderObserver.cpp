#include "app/models/ReaderObserver.h"

#include "card/client/LVitAccess.h"
#include "platform/MainQueue.h"

#include <mutex>
#include <utility>

namespace {

/// Whether a reader with that state was looked into and has no readable card.
bool isWithoutCard(std::optional<CardReaderState> state)
{
    return state == CardReaderState::Empty || state == CardReaderState::MuteCard;
}

/// Whether a card that was in the reader is no longer there. Without the service or the client that is unknown.
bool tellsRemoval(std::optional<CardReaderState> state)
{
    return isWithoutCard(state) || state == CardReaderState::NoReader || state == CardReaderState::OtherReader;
}

} // namespace

/// The changes that were not reported yet. Written on the client's thread, taken on the main one, under the mutex.
class ReaderObserver::Changes final
{
public:
    /// Whether a report is to be posted: none is on its way.
    [[nodiscard]] bool add(std::optional<CardReaderState> state)
    {
        const std::lock_guard lock(m_mutex);
        const bool isCard = state == CardReaderState::Card;
        m_change.hasCardCome = isCard && isWithoutCard(m_change.state);
        if (tellsRemoval(state))
            m_change.hasCardLeft = m_change.hasCardLeft || std::exchange(m_hadCard, false);
        m_hadCard = m_hadCard || isCard;
        m_change.state = state;
        return !std::exchange(m_isPosted, true);
    }

    [[nodiscard]] ReaderChange take()
    {
        const std::lock_guard lock(m_mutex);
        m_isPosted = false;
        return std::exchange(m_change, {.state = m_change.state});
    }

private:
    std::mutex m_mutex;
    ReaderChange m_change;
    bool m_hadCard = false; // the last state that says anything about a card was that there is one
    bool m_isPosted = false;
};

ReaderObserver::ReaderObserver(std::shared_ptr<LVitAccess> client, Report report)
    : m_client(std::move(client))
    , m_report(std::make_shared<const Report>(std::move(report)))
{
    const std::weak_ptr<const Report> weakReport = m_report;
    m_client->setReaderStateHandler(
        [changes = std::make_shared<Changes>(), weakReport](std::optional<CardReaderState> state) {
            if (!changes->add(state))
                return;
            postToMainQueue([changes, weakReport] {
                const ReaderChange change = changes->take();
                if (const std::shared_ptr<const Report> live = weakReport.lock())
                    (*live)(change);
            });
        });
}

ReaderObserver::~ReaderObserver()
{
    m_client->setReaderStateHandler({});
}
