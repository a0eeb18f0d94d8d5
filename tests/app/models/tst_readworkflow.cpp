#include "prefs/settings/MVSettings.h"
#include "prefs/settings/StandardPreferences.h"
#include "tests/app/models/ReadingDesk.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ReadingNotes;

namespace {

const FakeScript slowInit = FakeScript().doing("init", "slow");
const FakeScript slowRead = FakeScript().doing("vitale_read", "slow");
const FakeScript noCard = FakeScript().failing("vitale_read", 11);
const FakeScript wrongReader = FakeScript().readers({u"X"_s, u"Y"_s});

} // namespace

class tst_ReadWorkflow : public TestCase
{
    Q_OBJECT

private:
    LogCapture m_log;

private Q_SLOTS:
    void init() { m_log.clear(); }

    void aReadIsUnderWayUntilItsOutcomeArrives_data()
    {
        QTest::addColumn<bool>("isOnDemand");
        QTest::newRow("asked for") << false;
        QTest::newRow("needed") << true;
    }

    void aReadIsUnderWayUntilItsOutcomeArrives()
    {
        QFETCH(const bool, isOnDemand);
        ReadingDesk desk(slowRead);
        QVERIFY(!desk.workflow->isUnderWay());
        desk.read(isOnDemand);
        // It waits for the bind.
        QVERIFY(desk.workflow->isUnderWay());
        QVERIFY(!desk.workflow->isReading());
        QTRY_VERIFY(desk.workflow->isReading());
        QVERIFY(desk.workflow->isUnderWay());
        QTRY_VERIFY(desk.card);
        QVERIFY(!desk.workflow->isUnderWay());
    }

    void aReadIsUnderWayWhileItsOutcomeIsQueuedForTheMainThread()
    {
        const auto desk = ReadingDesk::bound();
        QVERIFY(desk);
        desk->readIfNeed();
        // No event is processed in this loop.
        const QDeadlineTimer deadline(10000);
        while (desk->workflow->isReading() && !deadline.hasExpired())
            QThread::yieldCurrentThread();
        QVERIFY(!desk->workflow->isReading());
        QVERIFY(!desk->card);
        QVERIFY(desk->workflow->isUnderWay());
        QTRY_VERIFY(desk->card);
        QVERIFY(!desk->workflow->isUnderWay());
    }

    void aBindDoesNotReadACard()
    {
        ReadingDesk desk;
        desk.workflow->bind();
        QVERIFY(!desk.workflow->isUnderWay());
        QTRY_VERIFY(desk.client->initialized());
        QVERIFY(!desk.workflow->isUnderWay());
    }

    void aReadWhoseBindFailsIsNoLongerUnderWay()
    {
        ReadingDesk desk(wrongReader);
        desk.workflow->readVitale();
        QVERIFY(desk.workflow->isUnderWay());
        QTRY_VERIFY(!desk.notes.isEmpty());
        QVERIFY(!desk.workflow->isUnderWay());
    }

    void aBindIsNotifiedOnTheMainThread()
    {
        ReadingDesk desk;
        desk.workflow->bind();
        QVERIFY(desk.notes.isEmpty());
        QTRY_COMPARE(desk.notes, QStringList{u"bind success"_s});
        QVERIFY(desk.isOnMainThread);
    }

    void aBindIsShownUntilItEnds_data()
    {
        QTest::addColumn<FakeScript>("behaviour");
        QTest::newRow("success") << FakeScript();
        QTest::newRow("failure") << wrongReader;
    }

    void aBindIsShownUntilItEnds()
    {
        QFETCH(const FakeScript, behaviour);
        ReadingDesk desk(behaviour);
        QVERIFY(!desk.showsBinding);
        desk.workflow->bind();
        QVERIFY(desk.showsBinding);
        QTRY_COMPARE(desk.notes.size(), 1);
        QVERIFY(!desk.showsBinding);
    }

    void aBindThatFailsIsNotifiedWithItsError()
    {
        ReadingDesk desk(wrongReader);
        desk.workflow->bind();
        QTRY_COMPARE(desk.notes, QStringList{u"bind failure -21"_s});
        QVERIFY(desk.isOnMainThread);
    }

    void aBindThatFailsWithoutAnErrorIsNotifiedWithTheGeneralOne()
    {
        ReadingDesk desk;
        desk.client = std::make_shared<LVitAccess>(ServiceCommand{desk.service.filePath(u"absent"_s), {}});
        desk.workflow = std::make_unique<ReadWorkflow>(desk.client, desk.settings, desk);
        desk.workflow->bind();
        QTRY_COMPARE(desk.notes, QStringList{u"bind failure -10"_s});
    }

    void theStartPassesTheModeOfTheSettingsToTheClient_data()
    {
        QTest::addColumn<QVariant>("setting");
        QTest::addColumn<QString>("mode");
        QTest::newRow("not chosen") << QVariant() << u"0"_s;
        QTest::newRow("automatic") << QVariant(0) << u"0"_s;
        QTest::newRow("installed") << QVariant(1) << u"1"_s;
        QTest::newRow("embedded") << QVariant(2) << u"2"_s;
        QTest::newRow("unknown") << QVariant(3) << u"0"_s;
        QTest::newRow("negative") << QVariant(-1) << u"0"_s;
        QTest::newRow("beyond an integer") << QVariant(qint64{4294967298}) << u"0"_s;
        QTest::newRow("a word") << QVariant(u"Embedded"_s) << u"0"_s;
    }

    void theStartPassesTheModeOfTheSettingsToTheClient()
    {
        QFETCH(const QVariant, setting);
        QFETCH(const QString, mode);
        ReadingDesk desk;
        registerStandardPreferences(desk.settings);
        if (setting.isValid())
            MVSettings::setPreferencesWithStringValue(desk.settings, {Settings::lvitMode.key}, setting.toString());
        desk.workflow->lVitInit();
        QTRY_COMPARE(desk.notes, QStringList{u"bind success"_s});
        QCOMPARE(desk.service.requested(u"Mode"_s), QStringList{mode});
        QCOMPARE(m_log.lines(MXLog::Debug).filter(u"Access Mode"_s),
                 QStringList{u"Initializing Vitale Access Mode : "_s + mode});
    }

    void aReadShowsTheSheetThenTheCardThenCopies()
    {
        const auto desk = ReadingDesk::bound();
        QVERIFY(desk);
        desk->workflow->readVitale();
        QCOMPARE(desk->notes, QStringList{nowSheet});
        QVERIFY(desk->workflow->isReading());
        QTRY_COMPARE(desk->notes, (QStringList{nowSheet, u"end of sheet"_s, u"card SPECIMEN"_s, u"copy"_s}));
        QVERIFY(!desk->workflow->isReading());
        QVERIFY(desk->isOnMainThread);
        QCOMPARE(desk->binds(), 1);
        QCOMPARE(desk->reads(), 1);
    }

    void aReadBindsFirstWhenTheServiceIsUnbound()
    {
        ReadingDesk desk;
        desk.workflow->readVitale();
        QVERIFY(desk.notes.isEmpty());
        QVERIFY(!desk.workflow->isReading());
        QTRY_COMPARE(desk.notes, readAfterBind);
    }

    void aReadWhoseBindFailsSendsNoReadRequest()
    {
        ReadingDesk desk(wrongReader);
        desk.workflow->readVitale();
        const QStringList once{u"bind failure -21"_s, u"read failed"_s};
        QTRY_COMPARE(desk.notes, once);
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.notes, once + once);
        QVERIFY(!desk.workflow->isReading());
        QCOMPARE(desk.binds(), 2);
        QCOMPARE(desk.reads(), 0);
    }

    void aReadThatFailsShowsItsErrorAfterTheSheetAndKeepsTheCard()
    {
        const auto desk = ReadingDesk::bound(noCard);
        QVERIFY(desk);
        CardRecord before;
        before.setText(CardKey::lastName, u"BEFORE"_s);
        desk->card = before;
        desk->workflow->readVitale();
        QTRY_COMPARE(desk->notes, (QStringList{nowSheet, u"end of sheet"_s, u"read failed"_s, u"error -30"_s}));
        QVERIFY(!desk->workflow->isReading());
        QCOMPARE(desk->card, std::optional(before));
    }

    void theNextReadReplacesTheCard()
    {
        const auto desk = ReadingDesk::bound();
        QVERIFY(desk);
        desk->card = CardRecord();
        desk->workflow->readVitale();
        QTRY_VERIFY(desk->notes.contains(u"copy"_s));
        QCOMPARE(desk->card->text(CardKey::lastName), u"SPECIMEN"_s);
    }

    void aSecondPressBeepsAndTheReaderIsAskedOnce()
    {
        const auto desk = ReadingDesk::bound(slowRead);
        QVERIFY(desk);
        desk->workflow->readVitale();
        desk->workflow->readVitale();
        QTRY_VERIFY(desk->notes.contains(u"copy"_s));
        QCOMPARE(desk->notes, (QStringList{nowSheet, busy, u"end of sheet"_s, u"card SPECIMEN"_s, u"copy"_s}));
        QCOMPARE(desk->reads(), 1);
    }

    void aSecondPressDuringTheBindBeepsAndTheReaderIsAskedOnce()
    {
        ReadingDesk desk(slowInit);
        desk.workflow->readVitale();
        desk.workflow->readVitale();
        QTRY_VERIFY(desk.notes.contains(u"copy"_s));
        QCOMPARE(desk.notes,
                 (QStringList{busy, u"bind success"_s, nowSheet, u"end of sheet"_s, u"card SPECIMEN"_s, u"copy"_s}));
        QCOMPARE(desk.binds(), 1);
        QCOMPARE(desk.reads(), 1);
    }

    void aPressDuringTheBindOfTheStartWaitsForIt()
    {
        ReadingDesk desk(slowInit);
        desk.workflow->lVitInit();
        desk.workflow->readVitale();
        QTRY_VERIFY(desk.notes.contains(u"copy"_s));
        QCOMPARE(desk.notes, readAfterBind);
        QCOMPARE(desk.binds(), 1);
        QCOMPARE(desk.reads(), 1);
    }

    void anExistingCardIsNotReadAgainWhenOneIsNeeded()
    {
        const auto desk = ReadingDesk::bound();
        QVERIFY(desk);
        desk->card = CardRecord();
        desk->readIfNeed();
        QCOMPARE(desk->notes, QStringList{u"handler 1 0"_s});
        QCOMPARE(desk->reads(), 0);
    }

    void anExistingCardIsUsedWithoutACardService()
    {
        ReadingDesk desk;
        desk.card = CardRecord();
        desk.readIfNeed();
        QCOMPARE(desk.notes, QStringList{u"handler 1 0"_s});
    }

    void anExistingCardIsUsedWhileAReadWaitsForTheBind()
    {
        ReadingDesk desk(slowInit);
        desk.card = CardRecord();
        desk.workflow->readVitale();
        desk.readIfNeed();
        QCOMPARE(desk.notes, QStringList{u"handler 1 0"_s});
        QTRY_VERIFY(desk.notes.contains(u"copy"_s));
    }

    void readingANeededCardWritesNoDebugCopy()
    {
        const auto desk = ReadingDesk::bound();
        QVERIFY(desk);
        desk->readIfNeed();
        QCOMPARE(desk->notes, QStringList{neededSheet});
        QTRY_COMPARE(desk->notes, (QStringList{neededSheet, u"end of sheet"_s, u"card SPECIMEN"_s, u"handler 1 0"_s}));
        QVERIFY(!desk->workflow->isReading());
        QVERIFY(desk->isOnMainThread);
    }

    void aNeededCardIsReadAfterABindWhenTheServiceIsUnbound()
    {
        ReadingDesk desk;
        desk.readIfNeed();
        QTRY_COMPARE(desk.notes, (QStringList{u"bind success"_s, neededSheet, u"end of sheet"_s, u"card SPECIMEN"_s,
                                              u"handler 1 0"_s}));
    }

    void theHandlerOfANeededCardReceivesTheFailure()
    {
        const auto desk = ReadingDesk::bound(noCard);
        QVERIFY(desk);
        desk->readIfNeed();
        QTRY_COMPARE(desk->notes, (QStringList{neededSheet, u"end of sheet"_s, u"read failed"_s, u"error -30"_s,
                                               u"handler 0 -30"_s}));
        QVERIFY(!desk->workflow->isReading());
        QVERIFY(!desk->card);
    }

    void theHandlerIsNeverCalledWhenTheBindFails()
    {
        ReadingDesk desk(wrongReader);
        desk.readIfNeed();
        QTRY_COMPARE(desk.notes, (QStringList{u"bind failure -21"_s, u"read failed"_s}));
        // A later bind does not start an abandoned read again.
        desk.workflow->bind();
        QTRY_COMPARE(desk.notes, (QStringList{u"bind failure -21"_s, u"read failed"_s, u"bind failure -21"_s}));
    }

    void aNeededCardIsNotRequestedDuringAReadAndNoBeepSounds()
    {
        const auto desk = ReadingDesk::bound(slowRead);
        QVERIFY(desk);
        desk->workflow->readVitale();
        desk->readIfNeed();
        QCOMPARE(desk->notes, (QStringList{nowSheet, u"handler 0 0"_s}));
        QTRY_VERIFY(desk->notes.contains(u"copy"_s));
        QCOMPARE(desk->reads(), 1);
    }

    void aNeededCardIsNotRequestedWhileAReadWaitsForTheBind()
    {
        ReadingDesk desk(slowInit);
        desk.workflow->readVitale();
        desk.readIfNeed();
        QCOMPARE(desk.notes, QStringList{u"handler 0 0"_s});
        QTRY_VERIFY(desk.notes.contains(u"copy"_s));
        QCOMPARE(desk.reads(), 1);
    }

    void aPressDuringTheReadOfANeededCardBeeps()
    {
        // The busy state ends on the client's thread. So this read lasts until the test kills the service.
        const auto desk = ReadingDesk::bound(FakeScript().doing("vitale_read", "silent"));
        QVERIFY(desk);
        desk->readIfNeed();
        QVERIFY(desk->workflow->isReading());
        desk->workflow->readVitale();
        QCOMPARE(desk->notes, (QStringList{neededSheet, busy}));
        QTRY_COMPARE(desk->reads(), 1);
        QCOMPARE(::kill(desk->service.processes().constFirst(), SIGKILL), 0);
        QTRY_VERIFY(desk->notes.contains(u"handler 0 -10"_s));
        QVERIFY(!desk->workflow->isReading());
        QCOMPARE(desk->reads(), 1);
    }

    void theHandlerMayRequestTheNextRead()
    {
        const auto desk = ReadingDesk::bound();
        QVERIFY(desk);
        desk->workflow->readVitaleIfNeedWithCompletionHandler(
            [&desk](bool, const std::optional<Error>&) { desk->workflow->readVitale(); });
        QTRY_VERIFY(desk->notes.contains(u"copy"_s));
        QVERIFY(!desk->notes.contains(busy));
        QCOMPARE(desk->reads(), 2);
    }
};

template class RunnableTests<tst_ReadWorkflow, QCoreApplication>;
#include "tst_readworkflow.moc"
