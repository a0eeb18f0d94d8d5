#include "tests/card/client/ClientTest.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

#include <condition_variable>
#include <mutex>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;
using namespace ClientTest;

namespace {

using State = std::optional<CardReaderState>;

/// The states that a client's handler received.
class States
{
public:
    [[nodiscard]] LVitAccess::ReaderStateHandler handler()
    {
        return [this](State state) {
            const std::lock_guard lock(m_mutex);
            m_states.append(state);
            m_isOnOneThread = m_isOnOneThread && (m_states.size() == 1 || m_thread == std::this_thread::get_id());
            m_thread = std::this_thread::get_id();
            m_changed.notify_all();
        };
    }
    /// All states, after that many have been received.
    [[nodiscard]] QList<State> first(qsizetype count)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::seconds(10), [this, count] { return m_states.size() >= count; });
        return m_states;
    }
    [[nodiscard]] bool areOnTheClientsThread()
    {
        const std::lock_guard lock(m_mutex);
        return m_isOnOneThread && m_thread != std::this_thread::get_id();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    QList<State> m_states;
    std::thread::id m_thread;
    bool m_isOnOneThread = true;
};

} // namespace

class tst_LVitAccessReader : public TestCase
{
    Q_OBJECT

private:
    LogCapture m_log;

private Q_SLOTS:
    void init() { m_log.clear(); }

    void theHandlerReceivesTheStatesThatTheServiceReports()
    {
        const auto [fake, client] = Served(FakeScript()
                                               .telling("init", {u"no_service"_s, u"no_reader"_s, u"other_reader"_s})
                                               .telling("set_readers", {u"empty"_s, u"card"_s, u"mute_card"_s}));
        States states;
        client->setReaderStateHandler(states.handler());
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(states.first(7), (QList<State>{std::nullopt, CardReaderState::NoService, CardReaderState::NoReader,
                                                CardReaderState::OtherReader, CardReaderState::Empty,
                                                CardReaderState::Card, CardReaderState::MuteCard}));
        QVERIFY(states.areOnTheClientsThread());
        client->setReaderStateHandler({});
    }

    void unknownAndRepeatedStatesAreNotReported()
    {
        const auto [fake, client] =
            Served(FakeScript().telling("init", {u"empty"_s, u"on fire"_s, u"empty"_s, u""_s, u"card"_s}));
        States states;
        client->setReaderStateHandler(states.handler());
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(states.first(3), (QList<State>{std::nullopt, CardReaderState::Empty, CardReaderState::Card}));
        client->setReaderStateHandler({});
    }

    void withoutAConnectionTheStateIsUnknown()
    {
        const auto [fake, client] = Served(FakeScript().telling("init", {u"card"_s}).doing("vitale_read", "crash"));
        States states;
        client->setReaderStateHandler(states.handler());
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(states.first(2), (QList<State>{std::nullopt, CardReaderState::Card}));
        QCOMPARE(summary(awaitRead(client)), general);
        QCOMPARE(states.first(3).mid(2), QList<State>{std::nullopt});
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(states.first(4).mid(3), QList<State>{CardReaderState::Card});
        client->setReaderStateHandler({});
    }

    void aNewHandlerReplacesTheEarlierOneAndReceivesTheState()
    {
        const auto [fake, client] =
            Served(FakeScript().telling("init", {u"card"_s}).telling("informations", {u"empty"_s}));
        States earlier;
        States later;
        client->setReaderStateHandler(earlier.handler());
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(earlier.first(2).size(), 2);
        client->setReaderStateHandler(later.handler());
        QCOMPARE(summary(awaitInformations(client)), success);
        QCOMPARE(later.first(2), (QList<State>{CardReaderState::Card, CardReaderState::Empty}));
        QCOMPARE(earlier.first(2).size(), 2);
        client->setReaderStateHandler({});
    }

    void withoutAHandlerStatesAreIgnored()
    {
        const auto [fake, client] = Served(FakeScript().telling("init", {u"card"_s}));
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(summary(awaitRead(client)), success);
    }
};

template class RunnableTests<tst_LVitAccessReader, QCoreApplication>;
#include "tst_lvitaccessreader.moc"
