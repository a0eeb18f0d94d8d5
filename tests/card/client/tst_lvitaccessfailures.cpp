#include "card/client/BindOutcome.h"
#include "tests/card/client/ClientTest.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;
using namespace ClientTest;

class tst_LVitAccessFailures : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAConnectionEveryCommandFails_data()
    {
        QTest::addColumn<bool>("isThere");
        QTest::newRow("absent program") << false;
        QTest::newRow("program that is not executable") << true;
    }

    void withoutAConnectionEveryCommandFails()
    {
        QFETCH(const bool, isThere);
        const FakeService fake;
        const QString path = fake.filePath(u"service"_s);
        if (isThere) {
            QVERIFY(writeFile(path, {}));
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        }
        const ClientPointer client = makeClient({path, {}});
        const auto bound = awaitBind(client);
        QCOMPARE(summary(bound), failureWithoutError);
        QVERIFY(bound->thread != std::this_thread::get_id());
        const auto wasRead = awaitRead(client);
        QCOMPARE(summary(wasRead), general);
        QVERIFY(wasRead->thread == bound->thread);
        QCOMPARE(summary(awaitReaders(client)), general);
        QCOMPARE(summary(awaitSetReaders(client, readerChoice(u"V"_s, u"C"_s))), general);
        QCOMPARE(summary(awaitInformations(client)), general);
        QCOMPARE(client->informations(), QVariantMap());
        QCOMPARE(client->initialized(), false);
    }

    void aBrokenReplyIsTheGeneralError_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::addColumn<bool>("isSeenByTimeout");
        for (const auto* const behaviour :
             {"garbage", "chatter", "huge", "crash", "crash-midway", "exit", "close-output", "close-input"})
            QTest::newRow(behaviour) << QString::fromLatin1(behaviour) << false;
        for (const auto* const behaviour : {"half", "silent", "stop-reading", "flood"})
            QTest::newRow(behaviour) << QString::fromLatin1(behaviour) << true;
    }

    void aBrokenReplyIsTheGeneralError()
    {
        QFETCH(const QString, behaviour);
        QFETCH(const bool, isSeenByTimeout);
        const FakeService fake(FakeScript().doing("any", behaviour));
        using namespace std::chrono_literals;
        ChannelLimits limits{.exitGrace = 100ms};
        if (isSeenByTimeout)
            limits.requestTimeout = 300ms;
        const ClientPointer client = makeClient(fake.command(), limits);
        QCOMPARE(summary(awaitBind(client)), general);
        QCOMPARE(summary(awaitReaders(client)), general);
        QCOMPARE(summary(awaitSetReaders(client, readerChoice(u"V"_s, u"C"_s))), general);
        const auto known = awaitInformations(client);
        QCOMPARE(summary(known), general);
        QVERIFY(!known->result);
        const auto wasRead = awaitRead(client);
        QCOMPARE(summary(wasRead), general);
        QVERIFY(!wasRead->result);
        QCOMPARE(client->initialized(), false);
        // A service that starts slowly may not have received the request before the limit.
        if (!isSeenByTimeout)
            QCOMPARE(commands(fake), (QStringList{u"init"_s, u"readers_list"_s, u"set_readers"_s, u"informations"_s,
                                                  u"vitale_read"_s}));
    }

    void aReplyThatIsNotADictionaryGivesTheGeneralErrorAndKeepsTheConnection()
    {
        const auto [fake, client] = Served(FakeScript().doing("vitale_read", "null"));
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(summary(awaitRead(client)), general);
        QCOMPARE(client->initialized(), true);
        QCOMPARE(summary(awaitInformations(client)), success);
        QCOMPARE(fake.processes().size(), 1);
    }

    void aReplyOfAnotherShapeIsTheGeneralErrorAndBreaksTheConnection_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::newRow("unknown key") << FakeScript().text("vitale_read", "Card", "<r/>");
        QTest::newRow("a key in another case") << FakeScript().text("vitale_read", "vitale", "<r/>");
        QTest::newRow("too many readers") << FakeScript().list("vitale_read", "Readers", QStringList(5000, u"X"_s));
    }

    void aReplyOfAnotherShapeIsTheGeneralErrorAndBreaksTheConnection()
    {
        QFETCH(const FakeScript, script);
        const auto [fake, client] = Served(script);
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(summary(awaitRead(client)), general);
        QCOMPARE(client->initialized(), false);
        QCOMPARE(client->bound(), false);
        QCOMPARE(summary(awaitInformations(client)), success);
        QCOMPARE(fake.processes().size(), 2);
    }

    void anInterruptionLeavesTheClientUnboundAndTheNextReadConnectsAgain()
    {
        const auto [fake, client] = Served();
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(client->initialized(), true);
        QCOMPARE(::kill(fake.processes().value(0), SIGKILL), 0);
        QTRY_COMPARE_WITH_TIMEOUT(client->initialized(), false, 30'000);
        QCOMPARE(summary(awaitRead(client)), success);
        QCOMPARE(client->initialized(), false);
        QCOMPARE(fake.processes().size(), 2);
        QCOMPARE(commands(fake), (QStringList{u"init"_s, u"readers_list"_s, u"set_readers"_s, u"vitale_read"_s}));
    }

    void aBindThatANewerOneReplacesEndsAsReplaced_data()
    {
        QTest::addColumn<QString>("command");
        for (const auto* const command : {"init", "readers_list", "set_readers"})
            QTest::newRow(command) << QString::fromLatin1(command);
    }

    void aBindThatANewerOneReplacesEndsAsReplaced()
    {
        QFETCH(const QString, command);
        const auto [fake, client] = Served(FakeScript().doing(command, "silent").onlyAtStart(1));
        auto replaced = beginBind(client);
        QTRY_VERIFY_WITH_TIMEOUT(commands(fake).contains(command), 30'000);
        QCOMPARE(summary(awaitBind(client)), success);
        QVERIFY(replaced.isThere());
        const auto outcome = replaced.wait();
        QVERIFY(!outcome->success);
        QVERIFY(isReplaced(bindOutcome(outcome->success, outcome->error)));
        QCOMPARE(client->initialized(), true);
        QCOMPARE(client->bound(), true);
    }

    void ofManyBindsTheNewestSucceeds()
    {
        const auto [fake, client] = Served();
        std::vector<Expected<NoResult>> binds;
        for (int index = 0; index < 20; ++index)
            binds.push_back(beginBind(client));
        QCOMPARE(summary(binds.back().wait()), success);
        binds.pop_back();
        for (auto& bind : binds) {
            QVERIFY(bind.isThere());
            const auto outcome = bind.wait();
            QVERIFY(outcome->success || isReplaced(bindOutcome(false, outcome->error)));
        }
        QCOMPARE(client->bound(), true);
    }

    void overlappingRequestsEachGetTheirOwnReply()
    {
        const auto [fake, client] = Served(FakeScript().reversing(5).failing("set_readers"));
        auto firstRead = beginRead(client);
        auto listed = beginReaders(client);
        auto chosen = beginSetReaders(client, readerChoice(u"V"_s, u"C"_s));
        auto known = beginInformations(client);
        auto secondRead = beginRead(client);
        QCOMPARE(lastName(secondRead.wait()), u"SPECIMEN"_s);
        QCOMPARE(known.wait()->result, (QVariantMap{{u"MVAPILecVersion"_s, u"1.2.3"_s}}));
        QCOMPARE(summary(chosen.wait()), general);
        QCOMPARE(listed.wait()->result, (QVariantMap{{u"Readers"_s, QStringList{u"Feitian SCR301"_s}}}));
        QCOMPARE(lastName(firstRead.wait()), u"SPECIMEN"_s);
        QCOMPARE(commands(fake), (QStringList{u"vitale_read"_s, u"readers_list"_s, u"set_readers"_s, u"informations"_s,
                                              u"vitale_read"_s}));
        QCOMPARE(fake.processes().size(), 1);
    }

    void handlersRunOnOneThreadThatIsNotTheCallers()
    {
        const auto [fake, client] = Served();
        const auto bound = awaitBind(client);
        QVERIFY(bound->thread != std::this_thread::get_id());
        QVERIFY(awaitReaders(client)->thread == bound->thread);
        QVERIFY(awaitInformations(client)->thread == bound->thread);
        QVERIFY(awaitRead(client)->thread == bound->thread);
        QVERIFY(awaitSetReaders(client, readerChoice(u"V"_s, {}))->thread == bound->thread);
        QVERIFY(awaitSetReaders(client, std::nullopt)->thread == bound->thread);
    }

    void aCommandIssuedFromAHandlerWorks()
    {
        const auto [fake, client] = Served();
        Expected<CardRecord> outcome;
        client->bindWithCompletionHandler(
            [client, handler = outcome.handler()](bool, const std::optional<Error>&) mutable {
                client->getInformationsWithCompletionHandler(
                    [client, handler = std::move(handler)](bool, const std::optional<Error>&,
                                                           const std::optional<QVariantMap>&) mutable {
                        client->readeVitaleWithCompletionHandler(std::move(handler));
                    });
            });
        QCOMPARE(lastName(outcome.wait()), u"SPECIMEN"_s);
        QCOMPARE(fake.processes().size(), 1);
    }

    void operationsWithoutAHandlerAreAccepted()
    {
        const auto [fake, client] = Served();
        client->bindWithCompletionHandler({});
        client->getReadersWithCompletionHandler({});
        client->setReadersWithCompletionHandler(std::nullopt, {});
        client->getInformationsWithCompletionHandler({});
        client->readeVitaleWithCompletionHandler({});
        QCOMPARE(summary(awaitRead(client)), success);

        const ClientPointer unconnected = makeClient({fake.filePath(u"absent"_s), {}});
        unconnected->bindWithCompletionHandler({});
        unconnected->readeVitaleWithCompletionHandler({});
        QCOMPARE(summary(awaitRead(unconnected)), general);
    }

    void aDroppedClientLivesUntilItsReplyHasCome()
    {
        const FakeService fake(FakeScript().doing("any", "slow"));
        ClientPointer client = makeClient(fake.command());
        const std::weak_ptr<LVitAccess> watched = client;
        auto bound = beginBind(client);
        auto wasRead = beginRead(client);
        client.reset();
        QCOMPARE(summary(wasRead.wait()), success);
        QCOMPARE(summary(bound.wait()), success);
        QTRY_VERIFY_WITH_TIMEOUT(watched.expired(), 30'000);
        QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(fake.processes().value(0)), 30'000);
    }

    void theLastReferenceCanBeDroppedInAHandler()
    {
        const FakeService fake;
        ClientPointer client = makeClient(fake.command());
        const std::weak_ptr<LVitAccess> watched = client;
        std::promise<void> dropped;
        auto future = dropped.get_future();
        LVitAccess& reference = *client;
        reference.bindWithCompletionHandler(
            [client = std::move(client), &dropped](bool, const std::optional<Error>&) mutable {
                client.reset();
                dropped.set_value();
            });
        QVERIFY(future.wait_for(std::chrono::seconds(30)) == std::future_status::ready);
        QTRY_VERIFY_WITH_TIMEOUT(watched.expired(), 30'000);
        QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(fake.processes().value(0)), 30'000);
        QCOMPARE(fake.notes().last(), u"end of input"_s);
    }

    void noServiceSurvivesAnApplicationThatIsKilled_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGKILL") << SIGKILL;
        QTest::newRow("SIGTERM") << SIGTERM;
    }

    void noServiceSurvivesAnApplicationThatIsKilled()
    {
        QFETCH(const int, signal);
        const FakeService fake(FakeScript().ignoringTheEnd());
        const ServiceCommand service = fake.command();
        QProcess application;
        application.start(QStringLiteral(PELMORA_CARD_CLIENT), QStringList{service.program} + service.arguments);
        QVERIFY(application.waitForStarted(30'000));
        QVERIFY(application.waitForReadyRead(30'000));
        QCOMPARE(application.readLine(), QByteArray("bound\n"));
        const pid_t process = fake.processes().value(0);
        QVERIFY(!FakeService::isDead(process));
        QCOMPARE(::kill(static_cast<pid_t>(application.processId()), signal), 0);
        QVERIFY(application.waitForFinished(30'000));
        QTRY_VERIFY_WITH_TIMEOUT(FakeService::isDead(process), 30'000);
    }
};

template class RunnableTests<tst_LVitAccessFailures, QCoreApplication>;

#include "tst_lvitaccessfailures.moc"
