#include "card/CardKeys.h"
#include "card/LVitAccess.h"
#include "card/ServiceVocabulary.h"
#include "tests/card/ChannelTestMain.h"
#include "tests/card/ClientOutcome.h"
#include "tests/card/FakeService.h"

#include <QRegularExpression>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;

namespace {

const QString general = u"Pelmora -10"_s;
const QString internal = u"Pelmora -11"_s;
const QString noReader = u"Pelmora -20"_s;
const QString badReader = u"Pelmora -21"_s;
const QString success = u"success"_s;
const QString failureWithoutError = u"failure"_s;

ClientPointer makeClient(const ServiceCommand& command, ChannelLimits limits = {})
{
    return std::make_shared<LVitAccess>(command, limits);
}

QStringList commands(const FakeService& fake)
{
    return fake.requested(u"Command"_s);
}

QVariantMap readerChoice(const QString& vitale, const QString& cps)
{
    QVariantMap choice;
    if (!vitale.isNull())
        choice.insert(ReaderKey::vitale.toString(), vitale);
    if (!cps.isNull())
        choice.insert(ReaderKey::cps.toString(), cps);
    return choice;
}

QByteArray hexCard(const QByteArray& lastName)
{
    return ("<T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire><ident><nomUsuel>" + lastName +
            "</nomUsuel></ident></T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>")
        .toHex();
}

QString lastName(const std::optional<Outcome<CardRecord>>& outcome)
{
    return outcome && outcome->result ? outcome->result->text(CardKey::lastName).value_or(u"absent"_s) : u"no record"_s;
}

} // namespace

class TestLVitAccess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

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
    void bindStopsAtTheCommandThatFails_data();
    void bindStopsAtTheCommandThatFails();
    void bindIsInitializedEvenWhenTheChoiceOfReadersFails_data();
    void bindIsInitializedEvenWhenTheChoiceOfReadersFails();
    void bindStartsFromAFreshConnection();
    void bindAnswersWhatWaitedOnTheOldConnection();
    void onlyTheWordTrueMeansEmbedded_data();
    void onlyTheWordTrueMeansEmbedded();

    void getReadersGivesTheNamesInTheServicesOrder_data();
    void getReadersGivesTheNamesInTheServicesOrder();
    void setReadersSendsBothNames_data();
    void setReadersSendsBothNames();
    void setReadersWithoutNamesFailsAndSendsNothing();

    void informationsAreReadByTheirPaths_data();
    void informationsAreReadByTheirPaths();
    void informationsAreAbsentFromInitUntilObtained();
    void failedInformationsGiveTheLastOnes_data();
    void failedInformationsGiveTheLastOnes();

    void aReadGivesTheRecordWithItsLabelAndItsText();
    void aReadWithoutALabelGivesARecordWithoutIt();
    void aFailedReadGivesTheErrorOfItsResult_data();
    void aFailedReadGivesTheErrorOfItsResult();
    void aReadWhoseDocumentIsBadFails_data();
    void aReadWhoseDocumentIsBadFails();
    void aDocumentInBytesIsDecoded_data();
    void aDocumentInBytesIsDecoded();

    void withoutAConnectionEveryCommandFails_data();
    void withoutAConnectionEveryCommandFails();
    void aBrokenReplyIsTheGeneralError_data();
    void aBrokenReplyIsTheGeneralError();
    void aReplyThatIsNoDictionaryIsTheGeneralErrorAndKeepsTheConnection();
    void anInterruptionLeavesTheClientUnboundAndTheNextReadConnectsAgain();
    void overlappingRequestsEachGetTheirOwnReply();
    void handlersRunOnOneThreadThatIsNotTheCallers();
    void aCommandIssuedFromAHandlerWorks();
    void operationsWithoutAHandlerDoNoHarm();
    void aDroppedClientLivesUntilItsReplyHasCome();
    void theLastReferenceCanBeDroppedInAHandler();
    void noServiceSurvivesAnApplicationThatIsKilled_data();
    void noServiceSurvivesAnApplicationThatIsKilled();
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

void TestLVitAccess::bindIsInitializedEvenWhenTheChoiceOfReadersFails_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::newRow("error") << QStringList{u"--set"_s, u"set_readers"_s, u"Status"_s, u"error"_s};
    QTest::newRow("no status") << QStringList{u"--unset"_s, u"set_readers"_s, u"Status"_s};
    QTest::newRow("null") << QStringList{u"--do"_s, u"set_readers"_s, u"null"_s};
    QTest::newRow("crash") << QStringList{u"--do"_s, u"set_readers"_s, u"crash"_s};
}

void TestLVitAccess::bindIsInitializedEvenWhenTheChoiceOfReadersFails()
{
    QFETCH(const QStringList, script);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command(script));
    QCOMPARE(summary(awaitBind(client)), general);
    QCOMPARE(client->initialized(), true);
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

void TestLVitAccess::informationsAreReadByTheirPaths_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QVariantMap>("informations");
    QTest::newRow("all four") << u"<r><apiLecVitale><version>7.08</version><tableLibVitale>4</tableLibVitale>"
                                 "<tableLibOrgDest>5</tableLibOrgDest><tableHab>6</tableHab></apiLecVitale></r>"_s
                              << QVariantMap{{u"MVAPILecVersion"_s, u"7.08"_s},
                                             {u"MVTableBinVersion"_s, u"4"_s},
                                             {u"MVPdtCdcVersion"_s, u"5"_s},
                                             {u"MVTableHabVersion"_s, u"6"_s}};
    QTest::newRow("an empty one") << u"<r><apiLecVitale><version>7</version><tableHab></tableHab></apiLecVitale></r>"_s
                                  << QVariantMap{{u"MVAPILecVersion"_s, u"7"_s}};
    QTest::newRow("the first of two, even empty")
        << u"<r><apiLecVitale><version/><version>7</version><tableHab>1</tableHab><tableHab>2</tableHab></apiLecVitale></r>"_s
        << QVariantMap{{u"MVTableHabVersion"_s, u"1"_s}};
    QTest::newRow("text in parts, as it stands")
        << u"<r><apiLecVitale><version> <b>7</b>.é </version></apiLecVitale></r>"_s
        << QVariantMap{{u"MVAPILecVersion"_s, u" 7.é "_s}};
    QTest::newRow("the root itself is no step")
        << u"<apiLecVitale><version>7</version></apiLecVitale>"_s << QVariantMap();
    QTest::newRow("nothing of it") << u"<r/>"_s << QVariantMap();
}

void TestLVitAccess::informationsAreReadByTheirPaths()
{
    QFETCH(const QString, document);
    QFETCH(const QVariantMap, informations);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command({u"--set"_s, u"informations"_s, u"Informations"_s, document}));
    const auto outcome = awaitInformations(client);
    QCOMPARE(summary(outcome), success);
    QCOMPARE(outcome->result, informations);
    QCOMPARE(client->informations(), informations);
    QCOMPARE(fake.requests(), QStringList{uR"({"Command":"informations"})"_s});
}

void TestLVitAccess::informationsAreAbsentFromInitUntilObtained()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    const QVariantMap obtained{{u"MVAPILecVersion"_s, u"1.2.3"_s}};
    QCOMPARE(summary(awaitInformations(client)), success);
    QCOMPARE(client->informations(), obtained);
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(client->informations(), std::nullopt);
    QCOMPARE(summary(awaitInformations(client)), success);
    QCOMPARE(client->informations(), obtained);
}

void TestLVitAccess::failedInformationsGiveTheLastOnes_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::addColumn<QString>("error");
    QTest::newRow("error") << QStringList{u"--set"_s, u"informations"_s, u"Status"_s, u"error"_s} << general;
    QTest::newRow("no status") << QStringList{u"--unset"_s, u"informations"_s, u"Status"_s} << general;
    QTest::newRow("no document") << QStringList{u"--unset"_s, u"informations"_s, u"Informations"_s} << general;
    QTest::newRow("a document under the command's name")
        << QStringList{u"--unset"_s,      u"informations"_s, u"Informations"_s, u"--set"_s,
                       u"informations"_s, u"informations"_s, u"<r/>"_s}
        << general;
    QTest::newRow("a document that is not UTF-8")
        << QStringList{u"--bytes"_s, u"informations"_s, u"Informations"_s, u"3c723ee93c2f723e"_s} << general;
    QTest::newRow("not XML") << QStringList{u"--set"_s, u"informations"_s, u"Informations"_s, u"versions"_s}
                             << u"XML"_s;
    QTest::newRow("empty") << QStringList{u"--set"_s, u"informations"_s, u"Informations"_s, u""_s} << u"XML"_s;
}

void TestLVitAccess::failedInformationsGiveTheLastOnes()
{
    QFETCH(const QStringList, script);
    QFETCH(const QString, error);
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command(script));
    auto outcome = awaitInformations(client);
    QVERIFY2(summary(outcome).startsWith(error), qPrintable(summary(outcome)));
    QCOMPARE(outcome->result, QVariantMap());
    // After an "init" there are none to give.
    QCOMPARE(summary(awaitBind(client)), success);
    outcome = awaitInformations(client);
    QVERIFY2(summary(outcome).startsWith(error), qPrintable(summary(outcome)));
    QCOMPARE(outcome->result, std::nullopt);
    QCOMPARE(client->informations(), std::nullopt);
}

void TestLVitAccess::aReadGivesTheRecordWithItsLabelAndItsText()
{
    const FakeService fake;
    const auto outcome = awaitRead(makeClient(fake.command()));
    QCOMPARE(summary(outcome), success);
    QVERIFY(outcome->result);
    const CardRecord& record = *outcome->result;
    QCOMPARE(record.text(CardKey::vitaleSerial), u"42"_s);
    QCOMPARE(record.text(CardKey::lastName), u"SPECIMEN"_s);
    QCOMPARE(record.text(CardKey::fundCodeLibelle), u"CPAM SPECIMEN"_s);
    QCOMPARE(record.text(CardKey::xmlString),
             u"<T_AsnDonneesVitale><tech><numSerie>42</numSerie></tech><listeBenef><T_AsnBeneficiaire><ident>"
             "<nomUsuel>SPECIMEN</nomUsuel></ident></T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>"_s);
    QCOMPARE(record.beneficiaries().size(), 1);
    QCOMPARE(fake.requests(), QStringList{uR"({"Command":"vitale_read"})"_s});
}

void TestLVitAccess::aReadWithoutALabelGivesARecordWithoutIt()
{
    const FakeService fake;
    const auto outcome = awaitRead(makeClient(fake.command({u"--unset"_s, u"vitale_read"_s, u"FundCodeLibelle"_s})));
    QCOMPARE(summary(outcome), success);
    QCOMPARE(outcome->result->text(CardKey::fundCodeLibelle), std::nullopt);
}

void TestLVitAccess::aFailedReadGivesTheErrorOfItsResult_data()
{
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("error");
    for (const auto& [result, code] : {std::pair("11", "-30"), std::pair("13", "-22"), std::pair("15", "-31"),
                                       std::pair("17", "-31"), std::pair("25", "-31"), std::pair("12", "-10"),
                                       std::pair("0", "-10"), std::pair("-11", "-10"), std::pair("", "-10")})
        QTest::addRow("result %s", result)
            << QString::fromLatin1(result) << u"Pelmora %1"_s.arg(QLatin1StringView(code));
}

void TestLVitAccess::aFailedReadGivesTheErrorOfItsResult()
{
    QFETCH(const QString, result);
    QFETCH(const QString, error);
    QStringList number;
    if (!result.isEmpty())
        number = {u"--number"_s, u"vitale_read"_s, u"Result"_s, result};
    // A document beside a failure is not looked at.
    for (const QStringList& status : {QStringList{u"--set"_s, u"vitale_read"_s, u"Status"_s, u"error"_s},
                                      QStringList{u"--unset"_s, u"vitale_read"_s, u"Status"_s}}) {
        const FakeService fake;
        const auto outcome = awaitRead(makeClient(fake.command(status + number)));
        QCOMPARE(summary(outcome), error);
        QVERIFY(!outcome->result);
    }
}

void TestLVitAccess::aReadWhoseDocumentIsBadFails_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::addColumn<QString>("error");
    QTest::newRow("missing") << QStringList{u"--unset"_s, u"vitale_read"_s, u"Vitale"_s} << general;
    QTest::newRow("a number") << QStringList{u"--number"_s, u"vitale_read"_s, u"Vitale"_s, u"7"_s} << general;
    QTest::newRow("empty") << QStringList{u"--set"_s, u"vitale_read"_s, u"Vitale"_s, u""_s} << u"XML"_s;
    QTest::newRow("not XML") << QStringList{u"--set"_s, u"vitale_read"_s, u"Vitale"_s, u"carte"_s} << u"XML"_s;
    QTest::newRow("cut") << QStringList{u"--set"_s, u"vitale_read"_s, u"Vitale"_s, u"<T_AsnDonneesVitale><tech>"_s}
                         << u"XML"_s;
    QTest::newRow("no beneficiary") << QStringList{u"--set"_s, u"vitale_read"_s, u"Vitale"_s,
                                                   u"<T_AsnDonneesVitale/>"_s}
                                    << u"Pelmora -40"_s;
    QTest::newRow("another root") << QStringList{u"--set"_s, u"vitale_read"_s, u"Vitale"_s, u"<card/>"_s}
                                  << u"Pelmora -40"_s;
    // 0x81 is nothing in any of the encodings.
    QTest::newRow("in no encoding") << QStringList{u"--bytes"_s, u"vitale_read"_s, u"Vitale"_s,
                                                   QString::fromLatin1(hexCard("SPECIMEN \x81"))}
                                    << general;
}

void TestLVitAccess::aReadWhoseDocumentIsBadFails()
{
    QFETCH(const QStringList, script);
    QFETCH(const QString, error);
    const FakeService fake;
    const auto outcome = awaitRead(makeClient(fake.command(script)));
    QVERIFY2(summary(outcome).startsWith(error), qPrintable(summary(outcome)));
    QVERIFY(!outcome->result);
}

void TestLVitAccess::aDocumentInBytesIsDecoded_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("read");
    QTest::newRow("UTF-8") << QByteArray("SP\xC3\x89"
                                         "CIMEN")
                           << u"SPÉCIMEN"_s;
    QTest::newRow("ISO Latin 1") << QByteArray("SP\xC9"
                                               "CIMEN")
                                 << u"SPÉCIMEN"_s;
    QTest::newRow("code page 1252") << QByteArray("SP\xC9"
                                                  "CIMEN-C\x8CUR")
                                    << u"SPÉCIMEN-CŒUR"_s;
}

void TestLVitAccess::aDocumentInBytesIsDecoded()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QString, read);
    const FakeService fake;
    const auto outcome = awaitRead(
        makeClient(fake.command({u"--bytes"_s, u"vitale_read"_s, u"Vitale"_s, QString::fromLatin1(hexCard(name))})));
    QCOMPARE(summary(outcome), success);
    QCOMPARE(lastName(outcome), read);
    QVERIFY(outcome->result->text(CardKey::xmlString).value_or(QString()).contains(read));
}

void TestLVitAccess::withoutAConnectionEveryCommandFails_data()
{
    QTest::addColumn<bool>("isThere");
    QTest::newRow("absent program") << false;
    QTest::newRow("program that is not executable") << true;
}

void TestLVitAccess::withoutAConnectionEveryCommandFails()
{
    QFETCH(const bool, isThere);
    const FakeService fake;
    const QString path = fake.filePath(u"service"_s);
    if (isThere) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.setPermissions(QFile::ReadOwner));
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

void TestLVitAccess::aBrokenReplyIsTheGeneralError_data()
{
    QTest::addColumn<QString>("behaviour");
    for (const auto* const behaviour : {"garbage", "chatter", "half", "huge", "crash", "crash-midway", "exit", "silent",
                                        "close-output", "close-input", "stop-reading", "flood"})
        QTest::newRow(behaviour) << QString::fromLatin1(behaviour);
}

void TestLVitAccess::aBrokenReplyIsTheGeneralError()
{
    QFETCH(const QString, behaviour);
    const FakeService fake;
    using namespace std::chrono_literals;
    const ClientPointer client =
        makeClient(fake.command({u"--do"_s, u"any"_s, behaviour}), {.requestTimeout = 300ms, .exitGrace = 100ms});
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
    QCOMPARE(commands(fake),
             (QStringList{u"init"_s, u"readers_list"_s, u"set_readers"_s, u"informations"_s, u"vitale_read"_s}));
}

void TestLVitAccess::aReplyThatIsNoDictionaryIsTheGeneralErrorAndKeepsTheConnection()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command({u"--do"_s, u"vitale_read"_s, u"null"_s}));
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(summary(awaitRead(client)), general);
    QCOMPARE(client->initialized(), true);
    QCOMPARE(summary(awaitInformations(client)), success);
    QCOMPARE(fake.processes().size(), 1);
}

void TestLVitAccess::anInterruptionLeavesTheClientUnboundAndTheNextReadConnectsAgain()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    QCOMPARE(summary(awaitBind(client)), success);
    QCOMPARE(client->initialized(), true);
    QCOMPARE(::kill(fake.processes().value(0), SIGKILL), 0);
    QTRY_COMPARE_WITH_TIMEOUT(client->initialized(), false, 30'000);
    QCOMPARE(summary(awaitRead(client)), success);
    QCOMPARE(client->initialized(), false);
    QCOMPARE(fake.processes().size(), 2);
    QCOMPARE(commands(fake), (QStringList{u"init"_s, u"readers_list"_s, u"set_readers"_s, u"vitale_read"_s}));
}

void TestLVitAccess::overlappingRequestsEachGetTheirOwnReply()
{
    const FakeService fake;
    const ClientPointer client =
        makeClient(fake.command({u"--reverse"_s, u"5"_s, u"--set"_s, u"set_readers"_s, u"Status"_s, u"error"_s}));
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
    QCOMPARE(commands(fake),
             (QStringList{u"vitale_read"_s, u"readers_list"_s, u"set_readers"_s, u"informations"_s, u"vitale_read"_s}));
    QCOMPARE(fake.processes().size(), 1);
}

void TestLVitAccess::handlersRunOnOneThreadThatIsNotTheCallers()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    const auto bound = awaitBind(client);
    QVERIFY(bound->thread != std::this_thread::get_id());
    QVERIFY(awaitReaders(client)->thread == bound->thread);
    QVERIFY(awaitInformations(client)->thread == bound->thread);
    QVERIFY(awaitRead(client)->thread == bound->thread);
    QVERIFY(awaitSetReaders(client, readerChoice(u"V"_s, {}))->thread == bound->thread);
    QVERIFY(awaitSetReaders(client, std::nullopt)->thread == bound->thread);
}

void TestLVitAccess::aCommandIssuedFromAHandlerWorks()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    Expected<CardRecord> outcome;
    client->bindWithCompletionHandler([client, handler = outcome.handler()](bool, const std::optional<Error>&) mutable {
        client->getInformationsWithCompletionHandler(
            [client, handler = std::move(handler)](bool, const std::optional<Error>&,
                                                   const std::optional<QVariantMap>&) mutable {
                client->readeVitaleWithCompletionHandler(std::move(handler));
            });
    });
    QCOMPARE(lastName(outcome.wait()), u"SPECIMEN"_s);
    QCOMPARE(fake.processes().size(), 1);
}

void TestLVitAccess::operationsWithoutAHandlerDoNoHarm()
{
    const FakeService fake;
    const ClientPointer client = makeClient(fake.command());
    client->bindWithCompletionHandler({});
    client->getReadersWithCompletionHandler({});
    client->setReadersWithCompletionHandler(std::nullopt, {});
    client->getInformationsWithCompletionHandler({});
    client->readeVitaleWithCompletionHandler({});
    QCOMPARE(summary(awaitRead(client)), success);

    const ClientPointer unconnected = makeClient({u"/nonexistent"_s, {}});
    unconnected->bindWithCompletionHandler({});
    unconnected->readeVitaleWithCompletionHandler({});
    QCOMPARE(summary(awaitRead(unconnected)), general);
}

void TestLVitAccess::aDroppedClientLivesUntilItsReplyHasCome()
{
    const FakeService fake;
    ClientPointer client = makeClient(fake.command({u"--do"_s, u"any"_s, u"slow"_s}));
    const std::weak_ptr<LVitAccess> watched = client;
    auto bound = beginBind(client);
    auto wasRead = beginRead(client);
    client.reset();
    QCOMPARE(summary(wasRead.wait()), success);
    QCOMPARE(summary(bound.wait()), success);
    QTRY_VERIFY_WITH_TIMEOUT(watched.expired(), 30'000);
    QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(fake.processes().value(0)), 30'000);
}

void TestLVitAccess::theLastReferenceCanBeDroppedInAHandler()
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

void TestLVitAccess::noServiceSurvivesAnApplicationThatIsKilled_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGKILL") << SIGKILL;
    QTest::newRow("SIGTERM") << SIGTERM;
}

void TestLVitAccess::noServiceSurvivesAnApplicationThatIsKilled()
{
    QFETCH(const int, signal);
    const FakeService fake;
    const ServiceCommand service = fake.command({u"--ignore-end"_s});
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

int main(int argc, char* argv[])
{
    return runChannelTest<TestLVitAccess>(argc, argv);
}

#include "tst_lvitaccess.moc"
