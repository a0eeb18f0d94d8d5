#include "app/models/CardServiceRequests.h"
#include "tests/app/models/ReadingDesk.h"
#include "tests/card/client/ClientOutcome.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ReadingNotes;
using namespace std::chrono_literals;

namespace {

// The limit for an answer, long enough for a service on a busy machine.
constexpr ChannelLimits impatient{.requestTimeout = 1s, .exitGrace = 100ms, .stopGrace = 100ms};

/// A bind as started by the preferences.
void bindFromElsewhere(const ReadingDesk& desk)
{
    bindCardService(*desk.client, postBindNotification);
}

} // namespace

class tst_ReadWorkflowFaults : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aServiceFailureDuringTheReadGivesTheGeneralError_data()
    {
        QTest::addColumn<QString>("behaviour");
        for (const auto* const behaviour : {"crash", "crash-midway", "garbage", "exit", "silent", "half"})
            QTest::newRow(behaviour) << QString::fromLatin1(behaviour);
    }

    void aServiceFailureDuringTheReadGivesTheGeneralError()
    {
        QFETCH(const QString, behaviour);
        ReadingDesk desk(FakeScript().doing("vitale_read", behaviour), impatient);
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.notes, generalErrorAfterBind);
        QVERIFY(!desk.workflow->isReading());

        // The service has ended, so the next read binds again.
        desk.notes.clear();
        QTRY_VERIFY(!desk.client->initialized());
        desk.readIfNeed();
        QTRY_COMPARE(desk.notes, (QStringList{u"bind success"_s, neededSheet, u"end of sheet"_s, u"read failed"_s,
                                              u"error -10"_s, u"handler 0 -10"_s}));
        QCOMPARE(desk.binds(), 2);
    }

    void aServiceFailureDuringTheBindIsReportedOnce_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("behaviour");
        for (const auto* const command : {"init", "readers_list", "set_readers"}) {
            for (const auto* const behaviour : {"crash", "silent"})
                QTest::addRow("%s %s", command, behaviour)
                    << QString::fromLatin1(command) << QString::fromLatin1(behaviour);
        }
    }

    void aServiceFailureDuringTheBindIsReportedOnce()
    {
        QFETCH(const QString, command);
        QFETCH(const QString, behaviour);
        ReadingDesk desk(FakeScript().doing(command, behaviour), impatient);
        desk.workflow->readVitale();
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.notes, (QStringList{busy, u"bind failure -10"_s, u"read failed"_s}));
        QVERIFY(!desk.workflow->isReading());
        QCOMPARE(desk.reads(), 0);
    }

    void afterAFailedBindTheNextReadBindsAgain_data()
    {
        QTest::addColumn<FakeScript>("behaviour");
        QTest::newRow("refused mode") << FakeScript().failing("init");
        QTest::newRow("no reader") << FakeScript().readers({});
        QTest::newRow("refused readers") << FakeScript().failing("set_readers");
        for (const auto* const behaviour : {"null", "crash", "silent"})
            QTest::addRow("set_readers %s", behaviour) << FakeScript().doing("set_readers", behaviour);
    }

    void afterAFailedBindTheNextReadBindsAgain()
    {
        QFETCH(const FakeScript, behaviour);
        ReadingDesk desk(behaviour.onlyAtStart(1), impatient);
        desk.workflow->lVitInit();
        QTRY_COMPARE(desk.notes.size(), 1);
        QVERIFY(desk.notes.constFirst().startsWith(u"bind failure"_s));
        desk.notes.clear();
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.notes, readAfterBind);
        QCOMPARE(desk.binds(), 2);
        QCOMPARE(desk.reads(), 1);
    }

    void afterAFailedBindOfThePreferencesTheNextReadBindsAgain()
    {
        ReadingDesk desk(FakeScript().failing("set_readers").onlyAtStart(1));
        QCOMPARE(ClientOutcome::summary(ClientOutcome::awaitBind(desk.client)), u"Pelmora -10"_s);
        QVERIFY(desk.client->initialized());
        desk.workflow->readVitale();
        QTRY_VERIFY(desk.notes.contains(u"copy"_s));
        QCOMPARE(desk.binds(), 2);
    }

    void aReadDuringABindOfThePreferencesReplacesItWithoutAnError()
    {
        ReadingDesk desk(FakeScript().doing("init", "silent").onlyAtStart(1));
        bindFromElsewhere(desk);
        QTRY_COMPARE(desk.binds(), 1);
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.notes, readAfterBind);
        QCOMPARE(desk.binds(), 2);
    }

    void aReadWhoseBindIsReplacedByThePreferencesWaitsForTheNewBind()
    {
        ReadingDesk desk(FakeScript().doing("init", "silent").onlyAtStart(1));
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.binds(), 1);
        bindFromElsewhere(desk);
        QVERIFY(desk.showsBinding);
        QTRY_COMPARE(desk.notes, readAfterBind);
        QVERIFY(!desk.showsBinding);
        QCOMPARE(desk.binds(), 2);
    }

    void aReadWhoseBindIsReplacedByAFailingOneEnds()
    {
        ReadingDesk desk(FakeScript().doing("init", "silent"));
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.binds(), 1);
        bindFromElsewhere(desk);
        QTRY_COMPARE(desk.binds(), 2);
        // The read now waits for the other bind.
        desk.workflow->readVitale();
        QCOMPARE(desk.notes, QStringList{busy});
        QCOMPARE(::kill(desk.service.processes().constLast(), SIGKILL), 0);
        QTRY_COMPARE(desk.notes, (QStringList{busy, u"bind failure -10"_s, u"read failed"_s}));
        QVERIFY(!desk.showsBinding);
        // A later bind does not start the abandoned read again.
        desk.notes.clear();
        bindFromElsewhere(desk);
        QTRY_COMPARE(desk.binds(), 3);
        QCOMPARE(::kill(desk.service.processes().constLast(), SIGKILL), 0);
        QTRY_COMPARE(desk.notes, QStringList{u"bind failure -10"_s});
        QCOMPARE(desk.reads(), 0);
    }

    void aReplacedBindWithoutAWaitingReadEndsWithoutAnError()
    {
        ReadingDesk desk(FakeScript().doing("init", "silent").onlyAtStart(1));
        desk.workflow->lVitInit();
        QTRY_COMPARE(desk.binds(), 1);
        bindFromElsewhere(desk);
        QTRY_COMPARE(desk.notes, QStringList{u"bind success"_s});
        QVERIFY(!desk.showsBinding);
    }

    void aServiceThatIsKilledFromOutsideEndsTheRead()
    {
        ReadingDesk desk(FakeScript().doing("vitale_read", "silent"));
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.reads(), 1);
        QCOMPARE(::kill(desk.service.processes().constFirst(), SIGKILL), 0);
        QTRY_COMPARE(desk.notes, generalErrorAfterBind);
    }

    void aBindDuringAReadEndsTheRead()
    {
        ReadingDesk desk(FakeScript().doing("vitale_read", "silent"));
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.reads(), 1);
        desk.workflow->bind();
        QTRY_COMPARE(desk.notes, (QStringList{u"bind success"_s, nowSheet, u"end of sheet"_s, u"read failed"_s,
                                              u"error -10"_s, u"bind success"_s}));
        QVERIFY(!desk.workflow->isReading());
    }

    void anOutcomeThatArrivesAfterTheWorkflowsEndIsIgnored_data()
    {
        QTest::addColumn<FakeScript>("behaviour");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("ifNeeded");
        QTest::newRow("bind") << FakeScript().doing("init", "slow") << u"init"_s << false;
        QTest::newRow("read") << FakeScript().doing("vitale_read", "slow") << u"vitale_read"_s << false;
        QTest::newRow("read if needed") << FakeScript().doing("vitale_read", "slow") << u"vitale_read"_s << true;
    }

    void anOutcomeThatArrivesAfterTheWorkflowsEndIsIgnored()
    {
        QFETCH(const FakeScript, behaviour);
        QFETCH(const QString, command);
        QFETCH(const bool, ifNeeded);
        ReadingDesk desk(behaviour);
        desk.read(ifNeeded);
        QTRY_COMPARE(desk.count(command), 1);
        desk.workflow.reset();
        const QStringList before = desk.notes;
        // Answers arrive in order: after a later answer, the handlers of the first one have run.
        QVERIFY(ClientOutcome::awaitReaders(desk.client).has_value());
        QCoreApplication::processEvents();
        QCOMPARE(desk.notes, before);
    }

    void theClientMayOutliveTheWorkflow()
    {
        auto desk = std::make_unique<ReadingDesk>(FakeScript().doing("vitale_read", "silent"), impatient);
        desk->workflow->readVitale();
        QTRY_COMPARE(desk->reads(), 1);
        const std::shared_ptr<LVitAccess> client = desk->client;
        desk.reset();
        QVERIFY(ClientOutcome::awaitBind(client).has_value());
        QCoreApplication::processEvents();
    }
};

template class RunnableTests<tst_ReadWorkflowFaults, QCoreApplication>;
#include "tst_readworkflowfaults.moc"
