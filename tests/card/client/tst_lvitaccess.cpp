#include "tests/card/client/ClientTest.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;
using namespace ClientTest;
using namespace std::chrono_literals;

class tst_LVitAccess : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aNewClientHasDefaults()
    {
        const auto [fake, client] = Served();
        QCOMPARE(client->initialized(), false);
        QCOMPARE(client->embedded(), false);
        QCOMPARE(client->accessMode(), 0U);
        QCOMPARE(client->informations(), QVariantMap());
        QVERIFY(fake.notes().isEmpty());
    }

    void theDefaultInstanceIsMadeOnce()
    {
        const FakeService fake;
        LVitAccess::setDefaultCommand(fake.command());
        std::vector<std::future<ClientPointer>> clients;
        for (int index = 0; index < 8; ++index)
            clients.push_back(std::async(std::launch::async, [] { return LVitAccess::defaultInstance(); }));
        for (auto& client : clients)
            QCOMPARE(client.get(), LVitAccess::defaultInstance());
        QCOMPARE(summary(awaitBind(LVitAccess::defaultInstance())), success);
        QCOMPARE(fake.processes().size(), 1);
    }

    void accessModeTakesZeroToTwoAndItsTextIsSent_data()
    {
        QTest::addColumn<unsigned>("mode");
        QTest::addColumn<unsigned>("stored");
        QTest::newRow("automatic") << 0U << 0U;
        QTest::newRow("system") << 1U << 1U;
        QTest::newRow("embedded") << 2U << 2U;
        QTest::newRow("3") << 3U << 0U;
        QTest::newRow("7") << 7U << 0U;
        QTest::newRow("the largest") << std::numeric_limits<unsigned>::max() << 0U;
    }

    void accessModeTakesZeroToTwoAndItsTextIsSent()
    {
        QFETCH(const unsigned, mode);
        QFETCH(const unsigned, stored);
        const auto [fake, client] = Served();
        client->setAccessMode(1);
        client->setAccessMode(mode);
        QCOMPARE(client->accessMode(), stored);
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(fake.requested(u"Mode"_s), QStringList{QString::number(stored)});
    }

    void modeNamesAreComparedExactly_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<unsigned>("mode");
        QTest::newRow("Auto") << u"Auto"_s << 0U;
        QTest::newRow("System") << u"System"_s << 1U;
        QTest::newRow("Embedded") << u"Embedded"_s << 2U;
        QTest::newRow("auto") << u"auto"_s << 0U;
        QTest::newRow("embedded") << u"embedded"_s << 0U;
        QTest::newRow("system with a blank") << u"System "_s << 0U;
        QTest::newRow("empty") << QString() << 0U;
    }

    void modeNamesAreComparedExactly()
    {
        QFETCH(const QString, name);
        QFETCH(const unsigned, mode);
        QCOMPARE(LVitAccess::_modeToInteger(name), mode);
    }

    void bindSendsInitThenReadersListThenSetReaders()
    {
        const auto [fake, client] = Served();
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(client->initialized(), true);
        QCOMPARE(fake.requests(),
                 (QStringList{uR"({"Command":"init","Mode":"0"})"_s, uR"({"Command":"readers_list"})"_s,
                              uR"({"Command":"set_readers","cps_reader_name":"Feitian SCR301",)"
                              uR"("vitale_reader_name":"Feitian SCR301"})"_s}));
    }

    void bindChoosesReadersOfTheList()
    {
        const auto [fake, client] = Served(FakeScript().readers({u"A"_s, u"Feitian SCR301"_s, u"B"_s}));
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(fake.requested(u"vitale_reader_name"_s), QStringList{u"Feitian SCR301"_s});
        QCOMPARE(fake.requested(u"cps_reader_name"_s), QStringList{u"A"_s});
    }

    void bindWithoutTheAcceptedReaderFails()
    {
        const auto [fake, client] = Served(FakeScript().readers({u"X"_s, u"Y"_s}));
        QCOMPARE(summary(awaitBind(client)), badReader);
        QCOMPARE(commands(fake), (QStringList{u"init"_s, u"readers_list"_s}));
        QCOMPARE(client->initialized(), false);
    }

    void bindFailsWithoutReaders_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::newRow("empty list") << FakeScript().readers({});
        QTest::newRow("no list") << FakeScript().without("readers_list", "Readers");
        QTest::newRow("a text for a list") << FakeScript().text("readers_list", "Readers", "Feitian SCR301");
    }

    void bindFailsWithoutReaders()
    {
        QFETCH(const FakeScript, script);
        const auto [fake, client] = Served(script);
        QCOMPARE(summary(awaitBind(client)), noReader);
        QCOMPARE(commands(fake), (QStringList{u"init"_s, u"readers_list"_s}));
        QCOMPARE(client->initialized(), false);
    }

    void theErrorForMissingReadersHasTheServicesDetail()
    {
        const auto [fake, client] =
            Served(FakeScript().readers({}).text("readers_list", "Detail", "Le service PC/SC ne répond pas."));
        const auto bound = awaitBind(client);
        QCOMPARE(summary(bound), noReader);
        QCOMPARE(bound->error->detail(), u"Le service PC/SC ne répond pas."_s);
    }

    void bindStopsAtTheCommandThatFails_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<QStringList>("sent");
        for (const auto& [command, sent] : {std::pair(u"init"_s, QStringList{u"init"_s}),
                                            std::pair(u"readers_list"_s, QStringList{u"init"_s, u"readers_list"_s})}) {
            const QByteArray name = command.toLatin1();
            QTest::addRow("%s: no status", name.constData()) << FakeScript().without(command, "Status") << sent;
            QTest::addRow("%s: error", name.constData()) << FakeScript().failing(command) << sent;
            QTest::addRow("%s: null", name.constData()) << FakeScript().doing(command, "null") << sent;
            QTest::addRow("%s: crash", name.constData()) << FakeScript().doing(command, "crash") << sent;
            QTest::addRow("%s: garbage", name.constData()) << FakeScript().doing(command, "garbage") << sent;
        }
    }

    void bindStopsAtTheCommandThatFails()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const QStringList, sent);
        const auto [fake, client] = Served(script);
        QCOMPARE(summary(awaitBind(client)), general);
        QCOMPARE(commands(fake), sent);
        QCOMPARE(client->initialized(), false);
    }

    void aFailedChoiceOfReadersKeepsTheClientInitialized_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<bool>("isConnected");
        QTest::newRow("error") << FakeScript().failing("set_readers") << true;
        QTest::newRow("no status") << FakeScript().without("set_readers", "Status") << true;
        QTest::newRow("null") << FakeScript().doing("set_readers", "null") << true;
        for (const auto* const behaviour : {"crash", "exit", "garbage", "silent"})
            QTest::newRow(behaviour) << FakeScript().doing("set_readers", behaviour) << false;
    }

    void aFailedChoiceOfReadersKeepsTheClientInitialized()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const bool, isConnected);
        const auto [fake, client] = Served(script.onlyAtStart(1), {.requestTimeout = 1s, .exitGrace = 100ms});
        QCOMPARE(summary(awaitBind(client)), general);
        QCOMPARE(client->initialized(), isConnected);
        QCOMPARE(client->bound(), false);
        // A new service works.
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(client->initialized(), true);
        QCOMPARE(client->bound(), true);
    }

    void theClientIsBoundFromASuccessfulBindToTheEndOfTheConnection()
    {
        const auto [fake, client] = Served();
        QCOMPARE(client->bound(), false);
        QCOMPARE(summary(awaitSetReaders(client, readerChoice(u"V"_s, {}))), success);
        QCOMPARE(client->bound(), false);
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(client->bound(), true);
        QCOMPARE(::kill(fake.processes().value(1), SIGKILL), 0);
        QTRY_COMPARE_WITH_TIMEOUT(client->bound(), false, 30'000);
        QCOMPARE(summary(awaitRead(client)), success);
        QCOMPARE(client->bound(), false);
    }

    void bindStartsFromAFreshConnection()
    {
        const auto [fake, client] = Served();
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(summary(awaitRead(client)), success);
        QCOMPARE(fake.processes().size(), 1);
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(fake.processes().size(), 2);
        QCOMPARE(client->initialized(), true);
        QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(fake.processes().value(0)), 30'000);
    }

    void bindAnswersRequestsOfTheOldConnection()
    {
        const auto [fake, client] = Served(FakeScript().doing("vitale_read", "silent"));
        auto waiting = beginRead(client);
        QCOMPARE(summary(awaitBind(client)), success);
        QVERIFY(waiting.isThere());
        QCOMPARE(summary(waiting.wait()), general);
        QCOMPARE(client->initialized(), true);
    }

    void onlyTheWordTrueMeansEmbedded_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<bool>("embedded");
        QTest::newRow("true") << FakeScript().text("init", "Embedded", "true") << true;
        QTest::newRow("TRUE") << FakeScript().text("init", "Embedded", "TRUE") << false;
        QTest::newRow("false") << FakeScript().text("init", "Embedded", "false") << false;
        QTest::newRow("with a blank") << FakeScript().text("init", "Embedded", "true ") << false;
        QTest::newRow("absent") << FakeScript().without("init", "Embedded") << false;
        QTest::newRow("1") << FakeScript().number("init", "Embedded", 1) << false;
        QTest::newRow("true in a failure") << FakeScript().failing("init") << true;
    }

    void onlyTheWordTrueMeansEmbedded()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const bool, embedded);
        const auto [fake, client] = Served(script);
        QVERIFY(awaitBind(client));
        QCOMPARE(client->embedded(), embedded);
    }

    void getReadersGivesTheNamesInTheServicesOrder_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("three") << FakeScript().readers({u"B"_s, u"A"_s, u"Lecteur é"_s})
                               << QStringList{u"B"_s, u"A"_s, u"Lecteur é"_s};
        QTest::newRow("none") << FakeScript().readers({}) << QStringList();
        QTest::newRow("some that are no texts")
            << FakeScript().oddReaders() << QStringList{u"A"_s, u"Feitian SCR301"_s};
    }

    void getReadersGivesTheNamesInTheServicesOrder()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const QStringList, names);
        const auto outcome = awaitReaders(Served(script).client);
        QCOMPARE(summary(outcome), success);
        QCOMPARE(outcome->result, (QVariantMap{{u"Readers"_s, names}}));
    }

    void setReadersSendsBothNames_data()
    {
        QTest::addColumn<QVariantMap>("choice");
        QTest::addColumn<QString>("request");
        QTest::newRow("both") << readerChoice(u"V"_s, u"C"_s)
                              << uR"({"Command":"set_readers","cps_reader_name":"C","vitale_reader_name":"V"})"_s;
        QTest::newRow("health card's alone")
            << readerChoice(u"V"_s, {})
            << uR"({"Command":"set_readers","cps_reader_name":"V","vitale_reader_name":"V"})"_s;
        QTest::newRow("professional card's alone")
            << readerChoice({}, u"C"_s) << uR"({"Command":"set_readers","cps_reader_name":"C"})"_s;
    }

    void setReadersSendsBothNames()
    {
        QFETCH(const QVariantMap, choice);
        QFETCH(const QString, request);
        const FakeService fake;
        QCOMPARE(summary(awaitSetReaders(makeClient(fake.command()), choice)), success);
        QCOMPARE(fake.requests(), QStringList{request});

        const FakeService refusing(FakeScript().text("set_readers", "Status", "no"));
        const ClientPointer client = makeClient(refusing.command());
        QCOMPARE(summary(awaitSetReaders(client, choice)), general);
        QCOMPARE(client->initialized(), false);
    }

    void setReadersWithoutNamesFailsAndSendsNothing()
    {
        const auto [fake, client] = Served();
        QCOMPARE(summary(awaitSetReaders(client, std::nullopt)), internal);
        QCOMPARE(summary(awaitSetReaders(client, QVariantMap())), internal);
        QCOMPARE(summary(awaitSetReaders(client, QVariantMap{{u"Vitale"_s, 7}, {u"Other"_s, u"V"_s}})), internal);
        QVERIFY(fake.notes().isEmpty());
    }
};

template class RunnableTests<tst_LVitAccess, QCoreApplication>;

#include "tst_lvitaccess.moc"
