#include "platform/print/PrintServer.h"
#include "tests/common/TestCase.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

PrintJob job()
{
    return {u"accueil"_s, u"Attestation de droits"_s, "%PDF-1.4"_ba, {}};
}

// libcups looks once on each thread where its server is.
template <typename Work>
auto onNewThread(const Work& work)
{
    std::optional<decltype(work())> result;
    std::thread([&work, &result] { result.emplace(work()); }).join();
    return *std::move(result);
}

} // namespace

// What a server that answers is asked is tested with a real one, where whole programs are.
class tst_PrintServer : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QVERIFY(m_folder.isValid());
        useServer(u"absent"_s);
    }

    void withoutAServerThereAreNoQueues()
    {
        const auto queues = onNewThread([] { return PrintServer().queues(); });
        QVERIFY(queues.has_value());
        QVERIFY(queues->isEmpty());
    }

    void withoutAServerNothingIsPrinted()
    {
        const auto printed = onNewThread([] { return PrintServer().print(job()); });
        QVERIFY(!printed.has_value());
        QVERIFY(!PrintServer::isSilent(printed.error()));
        QCOMPARE(printed.error().localizedDescription(), u"Le serveur d’impression n’est pas joignable."_s);
    }

    void aServerThatNeverAnswersIsGivenUp()
    {
        const std::unique_ptr<QLocalServer> server = silentServer();
        QVERIFY(server->isListening());
        QElapsedTimer clock;
        clock.start();
        const auto queues = onNewThread([] { return PrintServer().queues(); });
        QVERIFY(!queues.has_value());
        QVERIFY(PrintServer::isSilent(queues.error()));
        QCOMPARE(PrintServer::statusName(queues.error()), u"silent"_s);
        QCOMPARE(queues.error().localizedDescription(), u"Le serveur d’impression ne répond pas."_s);
        QVERIFY(clock.elapsed() >= PrintServer::patience.count());
        QVERIFY(clock.elapsed() < 5 * PrintServer::patience.count());
    }

    void whoeverLeavesNeedNotWait()
    {
        const std::unique_ptr<QLocalServer> server = silentServer();
        QVERIFY(server->isListening());
        std::expected<void, Error> printed;
        QElapsedTimer clock;
        clock.start();
        {
            // Its end asks it to stop.
            const std::jthread thread(
                [&printed](const std::stop_token& stop) { printed = PrintServer(stop).print(job()); });
        }
        QVERIFY(!printed.has_value());
        QVERIFY(clock.elapsed() < PrintServer::patience.count());
    }

    void aThreadCanDoWithoutTheServer()
    {
        const std::unique_ptr<QLocalServer> server = silentServer();
        QVERIFY(server->isListening());
        const auto queues = onNewThread([] {
            const WithoutPrintServer without;
            return PrintServer().queues();
        });
        QVERIFY(queues.has_value());
        QVERIFY(queues->isEmpty());
    }

private:
    void useServer(const QString& name)
    {
        m_path = m_folder.filePath(name);
        qputenv("CUPS_SERVER", QFile::encodeName(m_path));
    }

    // Connections come in, and nobody ever takes them.
    std::unique_ptr<QLocalServer> silentServer()
    {
        useServer(u"silent"_s);
        auto server = std::make_unique<QLocalServer>();
        server->listen(m_path);
        return server;
    }

    QTemporaryDir m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(tst_PrintServer)
#include "tst_printserver.moc"
