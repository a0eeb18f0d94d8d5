#include "platform/Bundle.h"
#include "platform/print/PrintServer.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/SilentServer.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

const QString brokenHelperText = u"Le programme d’impression de Pelmora ne fonctionne pas."_s;

PrintJob twoCopies()
{
    return {u"accueil"_s, u"Attestation de droits"_s, "%PDF-1.4"_ba, {{"copies", "2"}}};
}

} // namespace

// Requests to a server that answers are tested with a real server in the tests of whole programs.
class tst_PrintServer : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("CUPS_SERVER", QFile::encodeName(m_folder->filePath(u"absent"_s)));
    }

    void withoutAServerThereAreNoQueues()
    {
        PrintServer server(realHelper());
        const PrintAnswer queues = server.askAndWait(std::nullopt);
        QVERIFY(queues.has_value());
        QVERIFY(queues->isEmpty());
    }

    void withoutAServerNothingIsPrinted()
    {
        PrintServer server(realHelper());
        const PrintAnswer outcome = server.askAndWait(twoCopies());
        QVERIFY(!outcome.has_value());
        QCOMPARE(outcome.error().localizedDescription(), u"Le serveur d’impression n’est pas joignable."_s);
    }

    void aServerThatNeverAnswersGivesAnErrorAfterALimit()
    {
        const SilentServer silent("CUPS_SERVER");
        QElapsedTimer clock;
        clock.start();
        PrintServer server(realHelper());
        std::optional<PrintAnswer> queues;
        server.listQueues([&queues](const auto& known) { queues = known; });
        QTRY_VERIFY(queues);
        QVERIFY(!queues->has_value());
        QCOMPARE(queues->error(), Error(u"Impression"_s, -1));
        QCOMPARE(queues->error().localizedDescription(), u"Le serveur d’impression ne répond pas."_s);
        // Timers can be early by a twentieth.
        QVERIFY(clock.elapsed() >= PrintServer::patience.count() * 9 / 10);
        QVERIFY(clock.elapsed() < 5 * PrintServer::patience.count());
        QVERIFY(silent.isLeft());
    }

    void askingAndWaitingHasTheSameLimit()
    {
        const SilentServer silent("CUPS_SERVER");
        PrintServer server(realHelper());
        const PrintAnswer outcome = server.askAndWait(twoCopies());
        QVERIFY(!outcome.has_value());
        QCOMPARE(outcome.error().localizedDescription(), u"Le serveur d’impression ne répond pas."_s);
        QVERIFY(silent.isLeft());
    }

    void aCancelledRequestIsNotAnsweredAndItsConnectionIsClosed()
    {
        const SilentServer silent("CUPS_SERVER");
        PrintServer server(realHelper());
        bool isTold = false;
        server.listQueues([&isTold](const auto&) { isTold = true; });
        QTRY_VERIFY(silent.isAsked());
        server.cancel();
        QVERIFY(silent.isLeft());
        QVERIFY(!isTold);
    }

    void destructionDoesNotWaitForQueues()
    {
        const SilentServer silent("CUPS_SERVER");
        QElapsedTimer clock;
        {
            PrintServer server(realHelper());
            server.listQueues([](const auto&) { QFAIL("called after the end"); });
            QTRY_VERIFY(silent.isAsked());
            clock.start();
        }
        QVERIFY(clock.elapsed() < PrintServer::patience.count());
        QVERIFY(silent.isLeft());
    }

    void aHelperEndsByItselfWhenTheServerDoesNotAnswer()
    {
        const SilentServer silent("CUPS_SERVER");
        QProcess helper;
        helper.start(realHelper(), QStringList());
        helper.write(encodePrintRequest(twoCopies()));
        helper.closeWriteChannel();
        QVERIFY(helper.waitForFinished());
        QCOMPARE(helper.readAllStandardOutput(), ""_ba);
        QVERIFY(silent.isLeft());
    }

    void aHelperWithAnIncompleteRequestFails()
    {
        QProcess helper;
        helper.start(realHelper(), QStringList());
        helper.write(encodePrintRequest(twoCopies()).chopped(1));
        helper.closeWriteChannel();
        QVERIFY(helper.waitForFinished());
        QCOMPARE(helper.exitStatus(), QProcess::NormalExit);
        QCOMPARE(helper.exitCode(), 1);
        QCOMPARE(helper.readAllStandardOutput(), ""_ba);
    }

    void theHelperGetsTheJobOnItsInputOnly()
    {
        PrintServer server(fakeHelper("cat > $0.input; echo \"$@\" > $0.arguments; cat $0.answer", {}));
        QVERIFY(server.askAndWait(twoCopies()).has_value());
        QCOMPARE(decodePrintRequest(contentOf(fakePath() + ".input"_L1)), PrintRequest(twoCopies()));
        QCOMPARE(contentOf(fakePath() + ".arguments"_L1), "\n"_ba);
    }

    void theQueuesAreThoseOfTheHelpersAnswer()
    {
        const QList<PrintQueue> queues{{u"accueil"_s, true, "A5", QSizeF(420, 595), false, {}}};
        PrintServer server(fakeHelper("cat $0.answer", queues));
        QCOMPARE(server.askAndWait(std::nullopt).value(), queues);
        // A second operation works after the first one.
        QCOMPARE(server.askAndWait(std::nullopt).value(), queues);
    }

    void aRefusalOfTheHelperIsReported()
    {
        const Error refusal(u"Impression"_s, 1286, u"L’imprimante dort."_s);
        PrintServer server(fakeHelper("cat $0.answer", std::unexpected(refusal)));
        const PrintAnswer outcome = server.askAndWait(twoCopies());
        QVERIFY(!outcome.has_value());
        QCOMPARE(outcome.error(), refusal);
        QCOMPARE(outcome.error().localizedDescription(), u"L’imprimante dort."_s);
    }

    void theNextOperationCanBeginInAHandler()
    {
        PrintServer server(fakeHelper("cat > $0.input; cat $0.answer", {}));
        bool isPrinted = false;
        server.listQueues([&](const auto& queues) {
            QVERIFY(queues.has_value());
            server.print(twoCopies(), [&isPrinted](const auto& taken) { isPrinted = taken.has_value(); });
        });
        QTRY_VERIFY(isPrinted);
        QCOMPARE(decodePrintRequest(contentOf(fakePath() + ".input"_L1)), PrintRequest(twoCopies()));
    }

    void aHelperThatFailsIsReported_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("crash") << "kill -SEGV $$"_ba;
        QTest::newRow("crash after its answer") << "cat $0.answer; kill -SEGV $$"_ba;
        QTest::newRow("failure") << "cat $0.answer; exit 1"_ba;
        QTest::newRow("nothing") << ":"_ba;
        QTest::newRow("nonsense") << "echo Bonjour"_ba;
        QTest::newRow("two answers") << "cat $0.answer $0.answer"_ba;
    }

    void aHelperThatFailsIsReported()
    {
        QFETCH(const QByteArray, script);
        PrintServer server(fakeHelper(script, {}));
        const PrintAnswer queues = server.askAndWait(std::nullopt);
        QVERIFY(!queues.has_value());
        QCOMPARE(queues.error(), Error(u"Impression"_s, -2));
        QCOMPARE(queues.error().localizedDescription(), brokenHelperText);
        const PrintAnswer outcome = server.askAndWait(twoCopies());
        QVERIFY(!outcome.has_value());
        QCOMPARE(outcome.error().localizedDescription(), brokenHelperText);
    }

    void aMissingHelperIsReported()
    {
        PrintServer server(fakePath());
        std::optional<PrintAnswer> queues;
        server.listQueues([&queues](const auto& known) { queues = known; });
        QTRY_VERIFY(queues);
        QVERIFY(!queues->has_value());
        QCOMPARE(queues->error().localizedDescription(), brokenHelperText);
        const PrintAnswer outcome = server.askAndWait(twoCopies());
        QVERIFY(!outcome.has_value());
        QCOMPARE(outcome.error().localizedDescription(), brokenHelperText);
    }

    void destructionWaitsForAJobThatIsBeingSent()
    {
        PrintJob large = twoCopies();
        large.pdf = QByteArray(1'000'000, 'x'); // more than a pipe's buffer
        {
            PrintServer server(fakeHelper("cat > $0.part; mv $0.part $0.input; cat $0.answer", {}));
            server.print(large, [](const auto&) { QFAIL("called after the end"); });
        }
        QCOMPARE(decodePrintRequest(contentOf(fakePath() + ".input"_L1)), PrintRequest(large));
    }

    void destructionDoesNotWaitForAServerThatDoesNotAnswer()
    {
        const SilentServer silent("CUPS_SERVER");
        QElapsedTimer clock;
        clock.start();
        {
            PrintServer server(realHelper());
            server.print(twoCopies(), [](const auto&) { QFAIL("called after the end"); });
        }
        QVERIFY(clock.elapsed() < 2 * PrintServer::patience.count());
        QVERIFY(silent.isLeft());
    }

private:
    static QString realHelper() { return Bundle(u"" PELMORA_STAGE_SHARE ""_s).pathForProgram(u"pelmora-print"_s); }

    [[nodiscard]] QString fakePath() const { return m_folder->filePath(u"helper"_s); }

    // A shell script that replaces the helper, with its answer in a file beside it; empty when it cannot be made.
    [[nodiscard]] QString fakeHelper(const QByteArray& script, const PrintAnswer& answer) const
    {
        const bool isMade = writeFile(fakePath(), "#!/bin/sh\n" + script + '\n') &&
                            writeFile(fakePath() + ".answer"_L1, encodePrintAnswer(answer)) &&
                            QFile::setPermissions(fakePath(), QFile::ReadOwner | QFile::ExeOwner);
        return isMade ? fakePath() : QString();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

template class RunnableTests<tst_PrintServer, QCoreApplication>;
#include "tst_printserver.moc"
