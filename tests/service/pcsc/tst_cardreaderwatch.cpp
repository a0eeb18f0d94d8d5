#include "service/pcsc/CardReaderWatch.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

#include <condition_variable>
#include <mutex>
#include <semaphore>

using namespace Qt::StringLiterals;

namespace {

using Readers = ReaderEvents::Readers;

WatchedReader empty(const QByteArray& name = "Feitian SCR301 00 00")
{
    return {.name = name};
}

WatchedReader withCard(const QByteArray& name = "Feitian SCR301 00 00", unsigned movements = 1)
{
    return {.name = name, .hasCard = true, .movements = movements};
}

WatchedReader withMuteCard(const QByteArray& name = "Feitian SCR301 00 00")
{
    return {.name = name, .hasCard = true, .isMute = true, .movements = 1};
}

WatchedReader unplugged(const QByteArray& name = "Feitian SCR301 00 00")
{
    return {.name = name, .isConnected = false, .hasCard = true};
}

Readers fault(CardFault kind = CardFault::ServiceDown)
{
    return std::unexpected(kind);
}

/// Returns the states of a list one after the other, then waits until it is cancelled.
class ListedEvents final : public ReaderEvents
{
public:
    explicit ListedEvents(QList<Readers> readers, std::binary_semaphore* isWaiting = nullptr)
        : m_readers(std::move(readers))
        , m_isWaiting(isWaiting)
    {
    }

    std::optional<Readers> next() override
    {
        if (!m_readers.isEmpty())
            return m_readers.takeFirst();
        std::unique_lock lock(m_mutex);
        if (m_isWaiting != nullptr)
            m_isWaiting->release();
        m_changed.wait(lock, [this] { return m_isCancelled; });
        return std::nullopt;
    }
    void cancel() override
    {
        const std::lock_guard lock(m_mutex);
        m_isCancelled = true;
        m_changed.notify_all();
    }

private:
    QList<Readers> m_readers;
    std::binary_semaphore* m_isWaiting;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isCancelled = false;
};

/// The reports of a watch during these changes.
QList<CardReaderState> reportsOf(const QList<Readers>& readers)
{
    QList<CardReaderState> reports;
    std::binary_semaphore isWaiting{0};
    {
        const CardReaderWatch watch(std::make_unique<ListedEvents>(readers, &isWaiting),
                                    [&reports](CardReaderState state) { reports.append(state); });
        isWaiting.acquire();
    }
    return reports;
}

/// Waits in a call that cannot be cancelled until the test releases it.
struct Hang
{
    std::binary_semaphore entered{0};
    std::binary_semaphore release{0};
    std::binary_semaphore left{0};
};

class HangingEvents final : public ReaderEvents
{
public:
    explicit HangingEvents(std::shared_ptr<Hang> hang)
        : m_hang(std::move(hang))
    {
    }
    Q_DISABLE_COPY_MOVE(HangingEvents)
    ~HangingEvents() override { m_hang->left.release(); }

    std::optional<Readers> next() override
    {
        m_hang->entered.release();
        m_hang->release.acquire();
        return std::nullopt;
    }
    void cancel() override {}

private:
    std::shared_ptr<Hang> m_hang;
};

} // namespace

class tst_CardReaderWatch : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theStateIsThatOfTheAcceptedReaders_data()
    {
        QTest::addColumn<Readers>("readers");
        QTest::addColumn<CardReaderState>("state");
        const auto row = [](const char* name, const Readers& readers, CardReaderState state) {
            QTest::newRow(name) << readers << state;
        };
        const QByteArray other = "Alcor AU9540 00 00";
        const QByteArray second = "Feitian SCR301 [CCID Interface] (123) 01 00";
        row("no service", fault(), CardReaderState::NoService);
        row("refused account", fault(CardFault::ServiceForbidden), CardReaderState::NoService);
        row("no reader", QList<WatchedReader>(), CardReaderState::NoReader);
        row("other reader with a card", QList{withCard(other)}, CardReaderState::OtherReader);
        row("empty", QList{empty()}, CardReaderState::Empty);
        row("empty beside another reader's card", QList{withCard(other), empty()}, CardReaderState::Empty);
        row("card", QList{withCard()}, CardReaderState::Card);
        row("mute card", QList{withMuteCard()}, CardReaderState::MuteCard);
        row("card in the second one", QList{empty(), withCard(second)}, CardReaderState::Card);
        row("mute card beside a card", QList{withMuteCard(), withCard(second)}, CardReaderState::Card);
        row("mute card in the second one", QList{empty(), withMuteCard(second)}, CardReaderState::MuteCard);
        row("unplugged", QList{unplugged()}, CardReaderState::NoReader);
        row("unplugged beside another one", QList{unplugged(), empty(other)}, CardReaderState::OtherReader);
    }

    void theStateIsThatOfTheAcceptedReaders()
    {
        QFETCH(Readers, readers);
        QTEST(cardReaderState(readers), "state");
    }

    void onlyChangesOfTheStateAreReported()
    {
        const QList<Readers> readers{
            QList{empty()}, QList{empty()}, QList{withCard()}, QList{withCard()}, QList{empty()}, fault(), fault()};
        QCOMPARE(reportsOf(readers), (QList{CardReaderState::Empty, CardReaderState::Card, CardReaderState::Empty,
                                            CardReaderState::NoService}));
    }

    void aCardThatReplacesAnotherOneIsReportedAsTakenOutAndPutIn()
    {
        QCOMPARE(reportsOf({QList{withCard()}, QList{withCard("Feitian SCR301 00 00", 3)}}),
                 (QList{CardReaderState::Card, CardReaderState::Empty, CardReaderState::Card}));
    }

    void aCardInASecondReaderIsReportedAlthoughTheFirstOneHasACard()
    {
        const QByteArray second = "Feitian SCR301 01 00";
        QCOMPARE(reportsOf({QList{withCard(), empty(second)}, QList{withCard(), withCard(second)}}),
                 (QList{CardReaderState::Card, CardReaderState::Empty, CardReaderState::Card}));
    }

    void nothingIsReportedAfterItsEnd() { QCOMPARE(reportsOf({}), QList<CardReaderState>()); }

    void destructionDoesNotWaitForAThreadThatHangs()
    {
        const auto hang = std::make_shared<Hang>();
        {
            const CardReaderWatch watch(std::make_unique<HangingEvents>(hang), [](CardReaderState) {});
            hang->entered.acquire();
        }
        QVERIFY(!hang->left.try_acquire());
        hang->release.release();
        hang->left.acquire();
    }
};

template class RunnableTests<tst_CardReaderWatch, QCoreApplication>;
#include "tst_cardreaderwatch.moc"
