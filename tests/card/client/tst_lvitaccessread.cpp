#include "tests/card/client/ClientTest.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;
using namespace ClientTest;
using namespace std::chrono_literals;

class tst_LVitAccessRead : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void informationsAreReadByTheirPaths_data()
    {
        QTest::addColumn<QString>("document");
        QTest::addColumn<QVariantMap>("informations");
        QTest::newRow("all four") << u"<r><apiLecVitale><version>7.08</version><tableLibVitale>4</tableLibVitale>"
                                     "<tableLibOrgDest>5</tableLibOrgDest><tableHab>6</tableHab></apiLecVitale></r>"_s
                                  << QVariantMap{{u"MVAPILecVersion"_s, u"7.08"_s},
                                                 {u"MVTableBinVersion"_s, u"4"_s},
                                                 {u"MVPdtCdcVersion"_s, u"5"_s},
                                                 {u"MVTableHabVersion"_s, u"6"_s}};
        QTest::newRow("an empty one")
            << u"<r><apiLecVitale><version>7</version><tableHab></tableHab></apiLecVitale></r>"_s
            << QVariantMap{{u"MVAPILecVersion"_s, u"7"_s}};
        QTest::newRow("the first of two, even empty")
            << u"<r><apiLecVitale><version/><version>7</version><tableHab>1</tableHab><tableHab>2</tableHab></apiLecVitale></r>"_s
            << QVariantMap{{u"MVTableHabVersion"_s, u"1"_s}};
        QTest::newRow("text in parts, unchanged")
            << u"<r><apiLecVitale><version> <b>7</b>.é </version></apiLecVitale></r>"_s
            << QVariantMap{{u"MVAPILecVersion"_s, u" 7.é "_s}};
        QTest::newRow("the root itself is no step")
            << u"<apiLecVitale><version>7</version></apiLecVitale>"_s << QVariantMap();
        QTest::newRow("nothing of it") << u"<r/>"_s << QVariantMap();
    }

    void informationsAreReadByTheirPaths()
    {
        QFETCH(const QString, document);
        QFETCH(const QVariantMap, informations);
        const auto [fake, client] = Served(FakeScript().text("informations", "Informations", document));
        const auto outcome = awaitInformations(client);
        QCOMPARE(summary(outcome), success);
        QCOMPARE(outcome->result, informations);
        QCOMPARE(client->informations(), informations);
        QCOMPARE(fake.requests(), QStringList{uR"({"Command":"informations"})"_s});
    }

    void informationsAreAbsentFromInitUntilObtained()
    {
        const auto [fake, client] = Served();
        const QVariantMap obtained{{u"MVAPILecVersion"_s, u"1.2.3"_s}};
        QCOMPARE(summary(awaitInformations(client)), success);
        QCOMPARE(client->informations(), obtained);
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(client->informations(), std::nullopt);
        QCOMPARE(summary(awaitInformations(client)), success);
        QCOMPARE(client->informations(), obtained);
    }

    void failedInformationsGiveThePreviousOnes_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<QString>("error");
        QTest::newRow("error") << FakeScript().failing("informations") << general;
        QTest::newRow("no status") << FakeScript().without("informations", "Status") << general;
        QTest::newRow("no document") << FakeScript().without("informations", "Informations") << general;
        QTest::newRow("a document that is not UTF-8")
            << FakeScript().bytes("informations", "Informations", "<r>\xE9</r>") << general;
        QTest::newRow("not XML") << FakeScript().text("informations", "Informations", "versions") << u"XML"_s;
        QTest::newRow("empty") << FakeScript().text("informations", "Informations", "") << u"XML"_s;
    }

    void failedInformationsGiveThePreviousOnes()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const QString, error);
        const auto [fake, client] = Served(script);
        auto outcome = awaitInformations(client);
        QVERIFY2(summary(outcome).startsWith(error), qPrintable(summary(outcome)));
        QCOMPARE(outcome->result, QVariantMap());
        // An "init" clears them.
        QCOMPARE(summary(awaitBind(client)), success);
        outcome = awaitInformations(client);
        QVERIFY2(summary(outcome).startsWith(error), qPrintable(summary(outcome)));
        QCOMPARE(outcome->result, std::nullopt);
        QCOMPARE(client->informations(), std::nullopt);
    }

    void aReadGivesTheRecordWithItsLabelAndItsText()
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

    void aReadWithoutALabelGivesARecordWithoutIt()
    {
        const auto outcome = awaitRead(Served(FakeScript().without("vitale_read", "FundCodeLibelle")).client);
        QCOMPARE(summary(outcome), success);
        QCOMPARE(outcome->result->text(CardKey::fundCodeLibelle), std::nullopt);
    }

    void aFailedReadGivesTheErrorOfItsResult_data()
    {
        QTest::addColumn<std::optional<int>>("result");
        QTest::addColumn<QString>("error");
        for (const auto& [result, code] :
             {std::pair(11, -30), std::pair(13, -22), std::pair(15, -31), std::pair(17, -31), std::pair(25, -31),
              std::pair(12, -10), std::pair(0, -10), std::pair(-11, -10)})
            QTest::addRow("result %d", result) << std::optional(result) << u"Pelmora %1"_s.arg(code);
        QTest::newRow("no result") << std::optional<int>() << general;
    }

    void aFailedReadGivesTheErrorOfItsResult()
    {
        QFETCH(const std::optional<int>, result);
        QFETCH(const QString, error);
        const FakeScript failing = FakeScript().failing("vitale_read", result);
        // A document in the reply to a failed read is ignored.
        for (const FakeScript& script : {failing, failing.without("vitale_read", "Status")}) {
            const auto outcome = awaitRead(Served(script).client);
            QCOMPARE(summary(outcome), error);
            QVERIFY(!outcome->result);
        }
    }

    void theErrorOfAFailedReadHasTheServicesDetail()
    {
        const FakeScript failing = FakeScript().failing("vitale_read", 13);
        const FakeService telling(failing.text("vitale_read", "Detail", "Fermez l’autre programme."));
        const auto told = awaitRead(makeClient(telling.command()));
        QCOMPARE(summary(told), u"Pelmora -22"_s);
        QCOMPARE(told->error->detail(), u"Fermez l’autre programme."_s);
        const FakeService silent(failing);
        QCOMPARE(awaitRead(makeClient(silent.command()))->error->detail(), QString());
    }

    void aReadWhoseDocumentIsBadFails_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<QString>("error");
        QTest::newRow("missing") << FakeScript().without("vitale_read", "Vitale") << general;
        QTest::newRow("a number") << FakeScript().number("vitale_read", "Vitale", 7) << general;
        QTest::newRow("empty") << FakeScript().text("vitale_read", "Vitale", "") << u"XML"_s;
        QTest::newRow("not XML") << FakeScript().text("vitale_read", "Vitale", "carte") << u"XML"_s;
        QTest::newRow("cut") << FakeScript().text("vitale_read", "Vitale", "<T_AsnDonneesVitale><tech>") << u"XML"_s;
        QTest::newRow("no beneficiary") << FakeScript().text("vitale_read", "Vitale", "<T_AsnDonneesVitale/>")
                                        << u"Pelmora -40"_s;
        QTest::newRow("another root") << FakeScript().text("vitale_read", "Vitale", "<card/>") << u"Pelmora -40"_s;
        // 0x81 is not a character in any of the encodings.
        QTest::newRow("in no encoding") << FakeScript().bytes("vitale_read", "Vitale", vitaleOf("SPECIMEN \x81"))
                                        << general;
    }

    void aReadWhoseDocumentIsBadFails()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const QString, error);
        const auto outcome = awaitRead(Served(script).client);
        QVERIFY2(summary(outcome).startsWith(error), qPrintable(summary(outcome)));
        QVERIFY(!outcome->result);
    }

    void aDocumentInBytesIsDecoded_data()
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

    void aDocumentInBytesIsDecoded()
    {
        QFETCH(const QByteArray, name);
        QFETCH(const QString, read);
        const auto outcome = awaitRead(Served(FakeScript().bytes("vitale_read", "Vitale", vitaleOf(name))).client);
        QCOMPARE(summary(outcome), success);
        QCOMPARE(lastName(outcome), read);
        QVERIFY(outcome->result->text(CardKey::xmlString).value_or(QString()).contains(read));
    }

    void aCancelledReadEndsOnceAndTheNextBindStartsANewService()
    {
        // A service that waits for the reader does not notice the end of its input.
        const auto [fake, client] = Served(FakeScript().doing("vitale_read", "stop-reading"), {.exitGrace = 100ms});
        QCOMPARE(summary(awaitBind(client)), success);
        auto read = beginRead(client);
        QTRY_VERIFY(commands(fake).contains(u"vitale_read"_s));
        QVERIFY(!read.isThere());
        client->cancelReads();
        QVERIFY(!client->initialized());
        QCOMPARE(summary(read.wait()), general);
        QTRY_VERIFY(FakeService::isReaped(fake.processes().constFirst()));

        QCOMPARE(summary(awaitBind(client)), success);
        QVERIFY(client->initialized());
        QCOMPARE(fake.processes().size(), 2);
    }

    void aCancellationWithoutAReadKeepsTheConnection()
    {
        const auto [fake, client] = Served();
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(summary(awaitRead(client)), success);
        client->cancelReads();
        QVERIFY(!client->initialized());
        QCOMPARE(summary(awaitReaders(client)), success);
        QCOMPARE(fake.processes().size(), 1);
    }

    void aCancellationDoesNotEndABindThatReplacedTheRead()
    {
        const auto [fake, client] = Served(FakeScript().doing("vitale_read", "silent"));
        QCOMPARE(summary(awaitBind(client)), success);
        auto read = beginRead(client);
        auto bind = beginBind(client);
        client->cancelReads();
        QCOMPARE(summary(read.wait()), general);
        QCOMPARE(summary(bind.wait()), success);
        QCOMPARE(fake.processes().size(), 2);
    }
};

template class RunnableTests<tst_LVitAccessRead, QCoreApplication>;

#include "tst_lvitaccessread.moc"
