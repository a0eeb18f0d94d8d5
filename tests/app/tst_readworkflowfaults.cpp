#include "tests/app/ReadingDesk.h"
#include "tests/card/ClientOutcome.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString nowSheet = u"sheet Lecture de la carte Vitale..."_s;
const QString neededSheet = u"sheet Lecture de la carte vitale en cours…"_s;

// A service that does not answer is given up after this; long enough for one that does on a busy machine.
constexpr ChannelLimits impatient{.requestTimeout = 1s, .exitGrace = 100ms, .stopGrace = 100ms};

QStringList doing(const QString& command, const QString& behaviour)
{
    return {u"--do"_s, command, behaviour};
}

} // namespace

class tst_ReadWorkflowFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void aServiceThatFailsInTheReadEndsItWithTheGeneralError_data()
    {
        QTest::addColumn<QString>("behaviour");
        for (const auto* const behaviour : {"crash", "crash-midway", "garbage", "exit", "silent", "half"})
            QTest::newRow(behaviour) << QString::fromLatin1(behaviour);
    }

    void aServiceThatFailsInTheReadEndsItWithTheGeneralError()
    {
        QFETCH(const QString, behaviour);
        ReadingDesk desk(doing(u"vitale_read"_s, behaviour), impatient);
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.notes, (QStringList{u"bind success"_s, nowSheet, u"end of sheet"_s, u"error -10"_s}));
        QVERIFY(!desk.workflow->isReading());

        // The service is gone: the next one who needs a card binds again.
        desk.notes.clear();
        QTRY_VERIFY(!desk.client->initialized());
        desk.readIfNeed();
        QTRY_COMPARE(desk.notes, (QStringList{u"bind success"_s, neededSheet, u"end of sheet"_s, u"error -10"_s,
                                              u"handler 0 -10"_s}));
        QCOMPARE(desk.binds(), 2);
    }

    void aServiceThatFailsInTheBindIsToldOnce_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("behaviour");
        for (const auto* const command : {"init", "readers_list", "set_readers"}) {
            for (const auto* const behaviour : {"crash", "silent"})
                QTest::addRow("%s %s", command, behaviour)
                    << QString::fromLatin1(command) << QString::fromLatin1(behaviour);
        }
    }

    void aServiceThatFailsInTheBindIsToldOnce()
    {
        QFETCH(const QString, command);
        QFETCH(const QString, behaviour);
        ReadingDesk desk(doing(command, behaviour), impatient);
        desk.workflow->readVitale();
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.notes, (QStringList{u"beep"_s, u"bind failure -10"_s}));
        QVERIFY(!desk.workflow->isReading());
        QCOMPARE(desk.reads(), 0);
    }

    void aServiceThatIsKilledFromOutsideEndsTheRead()
    {
        ReadingDesk desk(doing(u"vitale_read"_s, u"silent"_s));
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.reads(), 1);
        QCOMPARE(::kill(desk.service.processes().constFirst(), SIGKILL), 0);
        QTRY_COMPARE(desk.notes, (QStringList{u"bind success"_s, nowSheet, u"end of sheet"_s, u"error -10"_s}));
    }

    void anotherBindEndsTheReadThatItCuts()
    {
        ReadingDesk desk(doing(u"vitale_read"_s, u"silent"_s));
        desk.workflow->readVitale();
        QTRY_COMPARE(desk.reads(), 1);
        desk.workflow->bind();
        QTRY_COMPARE(desk.notes,
                     (QStringList{u"bind success"_s, nowSheet, u"end of sheet"_s, u"error -10"_s, u"bind success"_s}));
        QVERIFY(!desk.workflow->isReading());
    }

    void whatComesAfterTheEndDoesNothing_data()
    {
        QTest::addColumn<QStringList>("behaviour");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("ifNeeded");
        QTest::newRow("bind") << doing(u"init"_s, u"slow"_s) << u"init"_s << false;
        QTest::newRow("read") << doing(u"vitale_read"_s, u"slow"_s) << u"vitale_read"_s << false;
        QTest::newRow("read if needed") << doing(u"vitale_read"_s, u"slow"_s) << u"vitale_read"_s << true;
    }

    void whatComesAfterTheEndDoesNothing()
    {
        QFETCH(const QStringList, behaviour);
        QFETCH(const QString, command);
        QFETCH(const bool, ifNeeded);
        ReadingDesk desk(behaviour);
        if (ifNeeded)
            desk.readIfNeed();
        else
            desk.workflow->readVitale();
        QTRY_COMPARE(desk.count(command), 1);
        desk.workflow.reset();
        const QStringList before = desk.notes;
        // Answers come in order: once a later one is there, the handlers of the first have run.
        QVERIFY(ClientOutcome::awaitReaders(desk.client).has_value());
        QCoreApplication::processEvents();
        QCOMPARE(desk.notes, before);
    }

    void theClientMayOutliveTheApplicationsInterest()
    {
        auto desk = std::make_unique<ReadingDesk>(doing(u"vitale_read"_s, u"silent"_s), impatient);
        desk->workflow->readVitale();
        QTRY_COMPARE(desk->reads(), 1);
        const std::shared_ptr<LVitAccess> client = desk->client;
        desk.reset();
        QVERIFY(ClientOutcome::awaitBind(client).has_value());
        QCoreApplication::processEvents();
    }
};

QTEST_GUILESS_MAIN(tst_ReadWorkflowFaults)
#include "tst_readworkflowfaults.moc"
