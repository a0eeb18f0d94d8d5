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

const FakeScript silentRead = FakeScript().doing("vitale_read", "silent");

// Waits until the outcomes of all earlier requests are queued for the main thread, without processing them.
bool awaitOutcomes(const ReadingDesk& desk)
{
    return ClientOutcome::awaitReaders(desk.client).has_value();
}

} // namespace

/// Reads that the user cancels.
class tst_ReadWorkflowCancel : public TestCase
{
    Q_OBJECT

private:
    static void addKinds()
    {
        QTest::addColumn<bool>("ifNeeded");
        QTest::newRow("read now") << false;
        QTest::newRow("read if needed") << true;
    }

private Q_SLOTS:
    void aCancelledReadEndsAtOnceWithoutAnError_data() { addKinds(); }
    void aCancelledReadEndsAtOnceWithoutAnError()
    {
        QFETCH(const bool, ifNeeded);
        const auto desk = ReadingDesk::bound(silentRead);
        QVERIFY(desk);
        desk->read(ifNeeded);
        QTRY_COMPARE(desk->reads(), 1);
        desk->workflow->cancelRead();
        QStringList expected{ifNeeded ? neededSheet : nowSheet, u"end of sheet"_s, u"read cancelled"_s};
        if (ifNeeded)
            expected.append(u"handler 0 0"_s);
        QCOMPARE(desk->notes, expected);
        QVERIFY(!desk->workflow->isReading());
        QVERIFY(!desk->card);

        // The client ends the request with an error, which is dropped: the read was cancelled.
        QVERIFY(awaitOutcomes(*desk));
        QCoreApplication::processEvents();
        QCOMPARE(desk->notes, expected);
        QVERIFY(!desk->workflow->isReading());
    }

    void aQueuedOutcomeOfACancelledReadIsDropped_data() { addKinds(); }
    void aQueuedOutcomeOfACancelledReadIsDropped()
    {
        QFETCH(const bool, ifNeeded);
        const auto desk = ReadingDesk::bound();
        QVERIFY(desk);
        CardRecord before;
        before.setText(CardKey::lastName, u"BEFORE"_s);
        if (!ifNeeded)
            desk->card = before;
        desk->read(ifNeeded);
        QVERIFY(awaitOutcomes(*desk));
        desk->workflow->cancelRead();
        const QStringList notes = desk->notes;
        QVERIFY(notes.contains(u"read cancelled"_s));
        QCoreApplication::processEvents();
        QCOMPARE(desk->notes, notes);
        QCOMPARE(desk->card, ifNeeded ? std::nullopt : std::optional(before));
    }

    void theReadAfterACancellationUsesANewService_data() { addKinds(); }
    void theReadAfterACancellationUsesANewService()
    {
        QFETCH(const bool, ifNeeded);
        // The first service hangs in the reader and receives no further request. The next one reads.
        ReadingDesk desk;
        const QString script =
            u"b=normal; mkdir '%1' 2>/dev/null && b=stop-reading; exec \"$0\" \"$@\" --do vitale_read $b"_s;
        ServiceCommand command = desk.service.command();
        command.arguments =
            QStringList{u"-c"_s, script.arg(desk.service.filePath(u"first"_s)), command.program} + command.arguments;
        command.program = u"/bin/sh"_s;
        desk.client = std::make_shared<LVitAccess>(command, ChannelLimits{.exitGrace = 100ms});
        desk.workflow = std::make_unique<ReadWorkflow>(desk.client, desk.settings, desk);

        desk.workflow->readVitale();
        QTRY_COMPARE(desk.reads(), 1);
        desk.workflow->cancelRead();
        desk.notes.clear();
        desk.read(ifNeeded);
        const QString sheet = ifNeeded ? neededSheet : nowSheet;
        const QString end = ifNeeded ? u"handler 1 0"_s : u"copy"_s;
        QTRY_COMPARE(desk.notes, (QStringList{u"bind success"_s, sheet, u"end of sheet"_s, u"card SPECIMEN"_s, end}));
        QCOMPARE(desk.service.processes().size(), 2);
        QTRY_VERIFY(FakeService::isReaped(desk.service.processes().constFirst()));
        QVERIFY(!FakeService::isDead(desk.service.processes().constLast()));
    }

    void withoutAReadNothingIsCancelled()
    {
        const auto desk = ReadingDesk::bound();
        QVERIFY(desk);
        desk->workflow->cancelRead();
        QVERIFY(desk->client->initialized());
        desk->workflow->readVitale();
        QTRY_VERIFY(desk->notes.contains(u"copy"_s));
        desk->workflow->cancelRead();
        QVERIFY(desk->client->initialized());
        QVERIFY(!desk->notes.contains(u"read cancelled"_s));
        QCOMPARE(desk->service.processes().size(), 1);
    }

    void cancellingDoesNotEndAReadThatWaitsForItsBind()
    {
        ReadingDesk desk(FakeScript().doing("init", "slow"));
        desk.workflow->readVitale();
        desk.workflow->cancelRead();
        QTRY_COMPARE(desk.notes, readAfterBind);
    }

    void theHandlerOfACancelledReadMayRequestTheNextRead()
    {
        const auto desk = ReadingDesk::bound(silentRead);
        QVERIFY(desk);
        int calls = 0;
        desk->workflow->readVitaleIfNeedWithCompletionHandler([&](bool success, const std::optional<Error>& error) {
            ++calls;
            if (!success && !error)
                desk->workflow->readVitale();
        });
        QTRY_COMPARE(desk->reads(), 1);
        desk->workflow->cancelRead();
        QTRY_COMPARE(desk->reads(), 2);
        QVERIFY(desk->workflow->isReading());
        QCOMPARE(calls, 1);
        QCOMPARE(desk->service.processes().size(), 2);
    }
};

template class RunnableTests<tst_ReadWorkflowCancel, QCoreApplication>;
#include "tst_readworkflowcancel.moc"
