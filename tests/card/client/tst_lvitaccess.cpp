#include "tests/card/client/ClientTest.h"
#include "tests/common/TestCase.h"

using namespace Qt::StringLiterals;
using namespace ClientOutcome;
using namespace ClientTest;
using namespace std::chrono_literals;

class TestLVitAccess : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aNewClientHasDefaults();
    void theDefaultInstanceIsMadeOnce();
    void accessModeTakesZeroToTwoAndItsTextIsSent_data();
    void accessModeTakesZeroToTwoAndItsTextIsSent();
    void modeNamesAreComparedExactly_data();
    void modeNamesAreComparedExactly();
    void bindSendsInitThenReadersListThenSetReaders();
    void bindChoosesReaders_data();
    void bindChoosesReaders();
    void bindWithoutTheAcceptedReaderFails();
    void bindFailsWithoutReaders_data();
    void bindFailsWithoutReaders();
    void whyThereAreNoReadersComesWithTheError();
    void bindStopsAtTheCommandThatFails_data();
    void bindStopsAtTheCommandThatFails();
    void aChoiceOfReadersThatFailsLeavesTheClientInitializedWhileItIsConnected_data();
    void aChoiceOfReadersThatFailsLeavesTheClientInitializedWhileItIsConnected();
    void theClientIsBoundAfterABindThatWentWellUntilItsConnectionEnds();
    void bindStartsFromAFreshConnection();
    void bindAnswersWhatWaitedOnTheOldConnection();
    void onlyTheWordTrueMeansEmbedded_data();
    void onlyTheWordTrueMeansEmbedded();
    void getReadersGivesTheNamesInTheServicesOrder_data();
    void getReadersGivesTheNamesInTheServicesOrder();
    void setReadersSendsBothNames_data();
    void setReadersSendsBothNames();
    void setReadersWithoutNamesFailsAndSendsNothing();
};

void TestLVitAccess::aNewClientHasDefaults()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    QCOMPARE(client->initialized(), false);
    QCOMPARE(client->embedded(), false);
    QCOMPARE(client->accessMode(), 0U);
    QCOMPARE(client->informations(), QVariantMap());
    QVERIFY(fake.notes().isEmpty());
}

void TestLVitAccess::theDefaultInstanceIsMadeOnce()
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

void TestLVitAccess::accessModeTakesZeroToTwoAndItsTextIsSent_data()
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

void TestLVitAccess::accessModeTakesZeroToTwoAndItsTextIsSent()
{
    QFETCH(const unsigned, mode);
    QFETCH(const unsigned, stored);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    client->setAccessMode(1);
    client->setAccessMode(mode);
    QCOMPARE(client->accessMode(), stored);
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(fake.requested(u"Mode"_s), QStringList{QString::number(stored)});
}

void TestLVitAccess::modeNamesAreComparedExactly_data()
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

void TestLVitAccess::modeNamesAreComparedExactly()
{
    QFETCH(const QString, name);
    QFETCH(const unsigned, mode);
    QCOMPARE(LVitAccess::_modeToInteger(name), mode);
}

void TestLVitAccess::bindSendsInitThenReadersListThenSetReaders()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(client->initialized(), true);
    QCOMPARE(fake.requests(), (QStringList{uR"({"Command":"init","Mode":"0"})"_s, uR"({"Command":"readers_list"})"_s,
                                           uR"({"Command":"set_readers","cps_reader_name":"Feitian SCR301",)"
                                           uR"("vitale_reader_name":"Feitian SCR301"})"_s}));
}

void TestLVitAccess::bindChoosesReaders_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QString>("cps");
    QTest::newRow("alone") << u"Feitian SCR301"_s << u"Feitian SCR301"_s;
    QTest::newRow("first of two") << u"Feitian SCR301|X"_s << u"X"_s;
    QTest::newRow("second of two") << u"X|Feitian SCR301"_s << u"X"_s;
    QTest::newRow("third of three") << u"A|B|Feitian SCR301"_s << u"B"_s;
    QTest::newRow("second of three") << u"A|Feitian SCR301|B"_s << u"A"_s;
    QTest::newRow("twice") << u"A|Feitian SCR301|Feitian SCR301"_s << u"A"_s;
    QTest::newRow("with another letter case before it") << u"feitian scr301|Feitian SCR301"_s << u"feitian scr301"_s;
}

void TestLVitAccess::bindChoosesReaders()
{
    QFETCH(const QString, list);
    QFETCH(const QString, cps);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command({u"--list"_s, u"readers_list"_s, u"Readers"_s, list}));
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(fake.requested(u"vitale_reader_name"_s), QStringList{u"Feitian SCR301"_s});
    QCOMPARE(fake.requested(u"cps_reader_name"_s), QStringList{cps});
}

void TestLVitAccess::bindWithoutTheAcceptedReaderFails()
{
    for (const QString& list : {u"X|Y"_s, u"Feitian SCR301 00 00"_s, u"feitian scr301"_s}) {
        const FakeService fake;
        const ClientPointer client = makeClient(fake.command({u"--list"_s, u"readers_list"_s, u"Readers"_s, list}));
        QCOMPARE(summary(awaitBind(client)), badReader);
        QCOMPARE(commands(fake), (QStringList{u"init"_s, u"readers_list"_s}));
        QCOMPARE(client->initialized(), false);
    }
}

void TestLVitAccess::bindFailsWithoutReaders_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::newRow("empty list") << QStringList{u"--list"_s, u"readers_list"_s, u"Readers"_s, u""_s};
    QTest::newRow("no list") << QStringList{u"--unset"_s, u"readers_list"_s, u"Readers"_s};
    QTest::newRow("a text for a list") << QStringList{u"--set"_s, u"readers_list"_s, u"Readers"_s, u"Feitian SCR301"_s};
}

void TestLVitAccess::bindFailsWithoutReaders()
{
    QFETCH(const QStringList, script);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command(script));
    QCOMPARE(summary(awaitBind(client)), noReader);
    QCOMPARE(commands(fake), (QStringList{u"init"_s, u"readers_list"_s}));
    QCOMPARE(client->initialized(), false);
}

void TestLVitAccess::whyThereAreNoReadersComesWithTheError()
{
    const FakeService fake;
    const QStringList script{u"--list"_s, u"readers_list"_s, u"Readers"_s, u""_s,
                             u"--set"_s,  u"readers_list"_s, u"Detail"_s,  u"Le service PC/SC ne répond pas."_s};
    const auto bound = awaitBind(makeClient(fake.command(script)));
    QCOMPARE(summary(bound), noReader);
    QCOMPARE(bound->error->detail(), u"Le service PC/SC ne répond pas."_s);
}

void TestLVitAccess::bindStopsAtTheCommandThatFails_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::addColumn<QStringList>("sent");
    for (const auto& [command, sent] : {std::pair(u"init"_s, QStringList{u"init"_s}),
                                        std::pair(u"readers_list"_s, QStringList{u"init"_s, u"readers_list"_s})}) {
        const QByteArray name = command.toLatin1();
        QTest::addRow("%s: no status", name.constData()) << QStringList{u"--unset"_s, command, u"Status"_s} << sent;
        QTest::addRow("%s: error", name.constData())
            << QStringList{u"--set"_s, command, u"Status"_s, u"error"_s} << sent;
        QTest::addRow("%s: Success", name.constData())
            << QStringList{u"--set"_s, command, u"Status"_s, u"Success"_s} << sent;
        QTest::addRow("%s: a number", name.constData())
            << QStringList{u"--number"_s, command, u"Status"_s, u"1"_s} << sent;
        QTest::addRow("%s: null", name.constData()) << QStringList{u"--do"_s, command, u"null"_s} << sent;
        QTest::addRow("%s: crash", name.constData()) << QStringList{u"--do"_s, command, u"crash"_s} << sent;
        QTest::addRow("%s: garbage", name.constData()) << QStringList{u"--do"_s, command, u"garbage"_s} << sent;
    }
}

void TestLVitAccess::bindStopsAtTheCommandThatFails()
{
    QFETCH(const QStringList, script);
    QFETCH(const QStringList, sent);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command(script));
    QCOMPARE(summary(awaitBind(client)), general);
    QCOMPARE(commands(fake), sent);
    QCOMPARE(client->initialized(), false);
}

void TestLVitAccess::aChoiceOfReadersThatFailsLeavesTheClientInitializedWhileItIsConnected_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::addColumn<bool>("isConnected");
    QTest::newRow("error") << QStringList{u"--set"_s, u"set_readers"_s, u"Status"_s, u"error"_s} << true;
    QTest::newRow("no status") << QStringList{u"--unset"_s, u"set_readers"_s, u"Status"_s} << true;
    QTest::newRow("null") << QStringList{u"--do"_s, u"set_readers"_s, u"null"_s} << true;
    for (const auto* const behaviour : {"crash", "exit", "garbage", "silent"})
        QTest::newRow(behaviour) << QStringList{u"--do"_s, u"set_readers"_s, QString::fromLatin1(behaviour)} << false;
}

void TestLVitAccess::aChoiceOfReadersThatFailsLeavesTheClientInitializedWhileItIsConnected()
{
    QFETCH(const QStringList, script);
    QFETCH(const bool, isConnected);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command(script + QStringList{u"--starts"_s, u"1"_s}),
                                            {.requestTimeout = 1s, .exitGrace = 100ms});
    QCOMPARE(summary(awaitBind(client)), general);
    QCOMPARE(client->initialized(), isConnected);
    QCOMPARE(client->bound(), false);
    // The service works when it is started again.
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(client->initialized(), true);
    QCOMPARE(client->bound(), true);
}

void TestLVitAccess::theClientIsBoundAfterABindThatWentWellUntilItsConnectionEnds()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
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

void TestLVitAccess::bindStartsFromAFreshConnection()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(summary(awaitRead(client)), success);
    QCOMPARE(fake.processes().size(), 1);
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(fake.processes().size(), 2);
    QCOMPARE(client->initialized(), true);
    QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(fake.processes().value(0)), 30'000);
}

void TestLVitAccess::bindAnswersWhatWaitedOnTheOldConnection()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command({u"--do"_s, u"vitale_read"_s, u"silent"_s}));
    auto waiting = beginRead(client);
    QCOMPARE(summary(awaitBind(client)), success);
    QVERIFY(waiting.isThere());
    QCOMPARE(summary(waiting.wait()), general);
    QCOMPARE(client->initialized(), true);
}

void TestLVitAccess::onlyTheWordTrueMeansEmbedded_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::addColumn<bool>("embedded");
    QTest::newRow("true") << QStringList{u"--set"_s, u"init"_s, u"Embedded"_s, u"true"_s} << true;
    QTest::newRow("TRUE") << QStringList{u"--set"_s, u"init"_s, u"Embedded"_s, u"TRUE"_s} << false;
    QTest::newRow("false") << QStringList{u"--set"_s, u"init"_s, u"Embedded"_s, u"false"_s} << false;
    QTest::newRow("with a blank") << QStringList{u"--set"_s, u"init"_s, u"Embedded"_s, u"true "_s} << false;
    QTest::newRow("absent") << QStringList{u"--unset"_s, u"init"_s, u"Embedded"_s} << false;
    QTest::newRow("1") << QStringList{u"--number"_s, u"init"_s, u"Embedded"_s, u"1"_s} << false;
    QTest::newRow("true in a failure") << QStringList{u"--set"_s, u"init"_s, u"Status"_s, u"error"_s} << true;
}

void TestLVitAccess::onlyTheWordTrueMeansEmbedded()
{
    QFETCH(const QStringList, script);
    QFETCH(const bool, embedded);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command(script));
    QVERIFY(awaitBind(client));
    QCOMPARE(client->embedded(), embedded);
}

void TestLVitAccess::getReadersGivesTheNamesInTheServicesOrder_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("three") << QStringList{u"--list"_s, u"readers_list"_s, u"Readers"_s, u"B|A|Lecteur é"_s}
                           << QStringList{u"B"_s, u"A"_s, u"Lecteur é"_s};
    QTest::newRow("none") << QStringList{u"--list"_s, u"readers_list"_s, u"Readers"_s, u""_s} << QStringList();
    QTest::newRow("some that are no texts")
        << QStringList{u"--odd-list"_s, u"readers_list"_s, u"Readers"_s} << QStringList{u"A"_s, u"Feitian SCR301"_s};
}

void TestLVitAccess::getReadersGivesTheNamesInTheServicesOrder()
{
    QFETCH(const QStringList, script);
    QFETCH(const QStringList, names);
    const FakeService fake;
    const auto outcome = awaitReaders(makeClient(fake.command(script)));
    QCOMPARE(summary(outcome), success);
    QCOMPARE(outcome->result, (QVariantMap{{u"Readers"_s, names}}));
}

void TestLVitAccess::setReadersSendsBothNames_data()
{
    QTest::addColumn<QVariantMap>("choice");
    QTest::addColumn<QString>("request");
    QTest::newRow("both") << readerChoice(u"V"_s, u"C"_s)
                          << uR"({"Command":"set_readers","cps_reader_name":"C","vitale_reader_name":"V"})"_s;
    QTest::newRow("health card's alone")
        << readerChoice(u"V"_s, {}) << uR"({"Command":"set_readers","cps_reader_name":"V","vitale_reader_name":"V"})"_s;
    QTest::newRow("professional card's alone")
        << readerChoice({}, u"C"_s) << uR"({"Command":"set_readers","cps_reader_name":"C"})"_s;
}

void TestLVitAccess::setReadersSendsBothNames()
{
    QFETCH(const QVariantMap, choice);
    QFETCH(const QString, request);
    const FakeService fake;
    QCOMPARE(summary(awaitSetReaders(makeClient(fake.command()), choice)), success);
    QCOMPARE(fake.requests(), QStringList{request});

    const FakeService refusing;
    const ClientPointer client = makeClient(refusing.command({u"--set"_s, u"set_readers"_s, u"Status"_s, u"no"_s}));
    QCOMPARE(summary(awaitSetReaders(client, choice)), general);
    QCOMPARE(client->initialized(), false);
}

void TestLVitAccess::setReadersWithoutNamesFailsAndSendsNothing()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    QCOMPARE(summary(awaitSetReaders(client, std::nullopt)), internal);
    QCOMPARE(summary(awaitSetReaders(client, QVariantMap())), internal);
    QCOMPARE(summary(awaitSetReaders(client, QVariantMap{{u"Vitale"_s, 7}, {u"Other"_s, u"V"_s}})), internal);
    QVERIFY(fake.notes().isEmpty());
}

int main(int argc, char** argv)
{
    return runChannelTest<TestLVitAccess>(argc, argv);
}

#include "tst_lvitaccess.moc"
