#include "app/models/ReaderObserver.h"
#include "card/client/LVitAccess.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/fakes/FakeService.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

#include <semaphore>

using namespace Qt::StringLiterals;

namespace {

/// A card service that reports states of its reader, and an observer whose reports are recorded.
struct Subject
{
    explicit Subject(const FakeScript& script)
        : service(script)
        , client(std::make_shared<LVitAccess>(service.command()))
    {
        observe();
    }

    void observe()
    {
        observer = std::make_unique<ReaderObserver>(client, [this](const ReaderChange& change) {
            isOnMainThread = isOnMainThread && QThread::currentThread() == mainThread;
            changes.append(change);
        });
    }
    /// Waits for the end of a client's operation without processing events, so that its reports are still queued.
    void bind()
    {
        std::binary_semaphore isDone{0};
        client->bindWithCompletionHandler([&isDone](bool, const std::optional<Error>&) { isDone.release(); });
        isDone.acquire();
    }
    void askForInformations()
    {
        std::binary_semaphore isDone{0};
        client->getInformationsWithCompletionHandler(
            [&isDone](bool, const std::optional<Error>&, const std::optional<QVariantMap>&) { isDone.release(); });
        isDone.acquire();
    }
    [[nodiscard]] ReaderChange last() const { return changes.isEmpty() ? ReaderChange() : changes.constLast(); }

    FakeService service;
    std::shared_ptr<LVitAccess> client;
    QList<ReaderChange> changes;
    bool isOnMainThread = true;
    QThread* mainThread = QThread::currentThread();
    std::unique_ptr<ReaderObserver> observer;
};

} // namespace

class tst_ReaderObserver : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void reportsArriveOnTheMainThread_data()
    {
        QTest::addColumn<QStringList>("states");
        QTest::addColumn<ReaderChange>("change");
        const auto row = [](const char* name, const QStringList& states, const ReaderChange& change) {
            QTest::newRow(name) << states << change;
        };
        using enum CardReaderState;
        row("a card that was there", {u"card"_s}, {.state = Card});
        row("a card that comes", {u"empty"_s, u"card"_s}, {.state = Card, .hasCardCome = true});
        row("a mute card that is turned over", {u"mute_card"_s, u"card"_s}, {.state = Card, .hasCardCome = true});
        row("a reader that comes with a card", {u"no_reader"_s, u"card"_s}, {.state = Card});
        row("a PC/SC service that comes", {u"no_service"_s, u"card"_s}, {.state = Card});
        row("a card that leaves", {u"card"_s, u"empty"_s}, {.state = Empty, .hasCardLeft = true});
        row("a reader that leaves with its card", {u"card"_s, u"no_reader"_s},
            {.state = NoReader, .hasCardLeft = true});
        row("a card that is replaced", {u"card"_s, u"empty"_s, u"card"_s},
            {.state = Card, .hasCardCome = true, .hasCardLeft = true});
        row("a card that came and left", {u"empty"_s, u"card"_s, u"empty"_s}, {.state = Empty, .hasCardLeft = true});
        row("a PC/SC service that ends", {u"card"_s, u"no_service"_s}, {.state = NoService});
        row("a PC/SC service that ends, and a card that leaves meanwhile",
            {u"card"_s, u"no_service"_s, u"no_reader"_s, u"empty"_s}, {.state = Empty, .hasCardLeft = true});
    }

    void reportsArriveOnTheMainThread()
    {
        QFETCH(QStringList, states);
        QFETCH(ReaderChange, change);
        Subject subject(FakeScript().telling("init", states));
        subject.bind();
        QTRY_COMPARE(subject.last(), change);
        QCOMPARE(subject.changes.size(), 1);
        QVERIFY(subject.isOnMainThread);
    }

    void eachReportHasTheStateAndItsChange()
    {
        Subject subject(
            FakeScript().telling("init", {u"empty"_s, u"card"_s}).telling("informations", {u"mute_card"_s}));
        subject.bind();
        QTRY_COMPARE(subject.last(), (ReaderChange{.state = CardReaderState::Card, .hasCardCome = true}));
        subject.askForInformations();
        QTRY_COMPARE(subject.last(), (ReaderChange{.state = CardReaderState::MuteCard, .hasCardLeft = true}));
    }

    void aCardThatStaysDuringABindIsNotReportedAsInsertedOrRemoved()
    {
        Subject subject(FakeScript().telling("init", {u"card"_s}));
        subject.bind();
        QTRY_COMPARE(subject.last().state, CardReaderState::Card);
        subject.changes.clear();
        subject.bind();
        QTRY_COMPARE(subject.last().state, CardReaderState::Card);
        for (const ReaderChange& change : std::as_const(subject.changes))
            QVERIFY(!change.hasCardCome && !change.hasCardLeft);
    }

    void afterTheObserversEndNothingIsReported()
    {
        Subject subject(FakeScript().telling("init", {u"card"_s}).telling("informations", {u"empty"_s}));
        subject.bind();
        subject.observer.reset();
        QTest::qWait(0);
        QCOMPARE(subject.changes, QList<ReaderChange>());
        subject.observe();
        QTRY_COMPARE(subject.last().state, CardReaderState::Card);
    }

    void severalQuickChangesGiveOneReport()
    {
        QStringList states;
        for (int round = 0; round < 1000; ++round)
            states << u"empty"_s << u"card"_s;
        Subject subject(FakeScript().telling("init", states));
        subject.bind();
        subject.askForInformations();
        QTRY_COMPARE(subject.last().state, CardReaderState::Card);
        QCOMPARE(subject.changes.size(), 1);
    }
};

template class RunnableTests<tst_ReaderObserver, QCoreApplication>;
#include "tst_readerobserver.moc"
