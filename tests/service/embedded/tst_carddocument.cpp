#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/PersonsCard.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_CardDocument : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void fieldsBecomeElements()
    {
        const CardContent card = cardOf(insured() + child());
        QCOMPARE(textsAt("tech/numSerie", card), u"\"0012AB\""_s);
        QCOMPARE(textsAt(beneficiary + "ident/nomUsuel", card), u"\"SPECIMEN\" \"SPECIMEN\""_s);
        QCOMPARE(textsAt(beneficiary + "ident/prenomUsuel", card), u"\"Hélène\" \"Zoé\""_s);
        QCOMPARE(textsAt(beneficiary + "ident/naissance/date", card), u"\"14051985\" \"14051985\""_s);
        QCOMPARE(textsAt(beneficiary + "ident/nir", card), u"\"285057511612381\""_s);
        QCOMPARE(textsAt(beneficiary + "amo/codeRegime", card), u"\"01\""_s);
    }

    void aFieldMissingOnTheCardGivesNoElement()
    {
        QCOMPARE(textsAt(beneficiary + "amo/libelleExo", cardOf(insured())), QString());
        QCOMPARE(textsAt(beneficiary + "ident/nomPatronymique", cardOf(insured())), QString());
        QCOMPARE(textsAt("tech", {{serialId, ""}, {personsId, insured()}}), QString());
        QCOMPARE(textsAt("tech", {{personsId, insured()}}), QString());
    }

    void markupOnTheCardIsEscaped()
    {
        Parts parts = insuredParts();
        parts["80"] = "</nomUsuel><x a=\"1\">&amp;]]>";
        QCOMPARE(textsAt(beneficiary + "ident/nomUsuel", cardOf(person(parts, coverageParts()))),
                 u"\"</nomUsuel><x a=\"1\">&amp;]]>\""_s);
    }

    void eachRecordOfAListIsAnElement()
    {
        const QByteArray periods = tlv("A2", tlv("80", "20240101")) + tlv("A2", "") + tlv("A2", tlv("80", "20250101"));
        const CardContent card = cardOf(person(insuredParts(), coverageParts(), periods) + child());
        QCOMPARE(textsAt(beneficiary + "ident/listePeriodesDroits/T_AsnPeriode", card),
                 u"\"01012024\" \"\" \"01012025\""_s);
        QCOMPARE(textsAt(beneficiary + "ident/listePeriodesDroits/T_AsnPeriode/debut", card),
                 u"\"01012024\" \"01012025\""_s);
        QCOMPARE(textsAt(beneficiary + "ident/listePeriodesDroits", cardOf(insured())), QString());
    }

    void theFirstNonEmptyFieldForAnElementIsUsed()
    {
        const CardMap map =
            mapChanged(u"beneficiaries/0/fields/10"_s,
                       QJsonObject{{u"path"_s, u"ident/nomUsuel"_s}, {u"tag"_s, u"85"_s}, {u"form"_s, u"text"_s}});
        const QByteArray other = tlv("85", "AUTRE");
        Parts parts = insuredParts();
        QCOMPARE(textsAt(beneficiary + "ident/nomUsuel", cardOf(person(parts, coverageParts(), other)), map),
                 u"\"SPECIMEN\""_s);
        parts["80"] = "        ";
        QCOMPARE(textsAt(beneficiary + "ident/nomUsuel", cardOf(person(parts, coverageParts(), other)), map),
                 u"\"AUTRE\""_s);
    }

    void theInsuredPersonNeedsTheFieldsOfTheAttestation_data()
    {
        QTest::addColumn<QByteArray>("tag");
        QTest::addColumn<bool>("isOfCoverage");
        QTest::addColumn<QString>("element");
        QTest::newRow("name") << QByteArray("80") << false << u"ident/nomUsuel"_s;
        QTest::newRow("first name") << QByteArray("81") << false << u"ident/prenomUsuel"_s;
        QTest::newRow("date of birth") << QByteArray("82") << false << u"ident/naissance/date"_s;
        QTest::newRow("rank") << QByteArray("83") << false << u"ident/rangDeNaissance"_s;
        QTest::newRow("number") << QByteArray("93") << false << u"ident/nir"_s;
        QTest::newRow("quality") << QByteArray("80") << true << u"amo/qualBenef"_s;
        QTest::newRow("scheme") << QByteArray("81") << true << u"amo/codeRegime"_s;
        QTest::newRow("fund") << QByteArray("82") << true << u"amo/caisse"_s;
        QTest::newRow("centre") << QByteArray("83") << true << u"amo/centreCarte"_s;
        QTest::newRow("management") << QByteArray("84") << true << u"amo/codeGestion"_s;
    }
    void theInsuredPersonNeedsTheFieldsOfTheAttestation()
    {
        QFETCH(const QByteArray, tag);
        QFETCH(const bool, isOfCoverage);
        QFETCH(const QString, element);
        Parts parts = insuredParts();
        Parts coverage = coverageParts();
        Parts& changed = isOfCoverage ? coverage : parts;
        changed[tag] = " ";
        QCOMPARE(missingIn(cardOf(person(parts, coverage))), QStringList(element));
        changed.erase(tag);
        QCOMPARE(missingIn(cardOf(person(parts, coverage))), QStringList(element));
        QCOMPARE(gapOf(cardOf(person(parts, coverage))), u"il manque à l’assuré : %1"_s.arg(element));
    }

    void zerosGiveNoNumberSchemeOrDate()
    {
        Parts parts = insuredParts();
        Parts coverage = coverageParts();
        parts["82"] = "00000000";
        parts["93"] = "0000000000000";
        coverage["81"] = "00";
        QCOMPARE(missingIn(cardOf(person(parts, coverage))),
                 QStringList({u"ident/nir"_s, u"amo/codeRegime"_s, u"ident/naissance/date"_s}));
    }

    void otherPersonsNeedTheFieldsOfTheirLine()
    {
        Parts parts = insuredParts();
        parts.erase("83");
        parts.erase("82");
        parts.erase("93");
        QCOMPARE(gapOf(cardOf(insured() + person(parts, {}))),
                 u"il manque au bénéficiaire 2 : ident/rangDeNaissance"_s);
        QCOMPARE(gapOf(cardOf(insured() + child() + person(Parts(), {}))),
                 u"il manque au bénéficiaire 3 : ident/nomUsuel, ident/prenomUsuel, ident/rangDeNaissance"_s);
    }

    void theInsuredPersonCanBeAtAnyPosition()
    {
        QCOMPARE(gapOf(cardOf(child() + insured())), QString());
        Parts coverage = coverageParts();
        coverage.erase("82");
        QCOMPARE(gapOf(cardOf(child() + person(insuredParts(), coverage))), u"il manque à l’assuré : amo/caisse"_s);
    }

    void anIncompleteDateOfBirthGivesNoElement_data()
    {
        QTest::addColumn<QByteArray>("date");
        for (const char* date : {"19850500", "19850000", "1985    ", "198505  ", "00000514", "    0514", "19850014"})
            QTest::newRow(date) << QByteArray(date);
    }
    void anIncompleteDateOfBirthGivesNoElement()
    {
        QFETCH(const QByteArray, date);
        QJsonObject shortDate{{u"path"_s, u"ident/naissance/dateEnCarte"_s}, {u"tag"_s, u"82"_s}};
        shortDate.insert(u"form"_s, u"short-date"_s);
        const CardMap map = mapChanged(u"beneficiaries/0/fields/10"_s, shortDate);
        Parts parts = insuredParts();
        parts["82"] = date;
        const CardContent card = cardOf(person(parts, coverageParts()) + child());
        // Without the element, the page shows that the date is unknown.
        QCOMPARE(textsAt(beneficiary + "ident/naissance/date", card, map), u"\"14051985\""_s);
        QCOMPARE(textsAt(beneficiary + "ident/naissance/dateEnCarte", card, map), u"\"850514\""_s);
    }

    void aShortDateIsWrittenEvenIfTheLongDateIsIncomplete()
    {
        QJsonObject shortDate{{u"path"_s, u"ident/naissance/dateEnCarte"_s}, {u"tag"_s, u"85"_s}};
        shortDate.insert(u"form"_s, u"digits"_s);
        const CardMap map = mapChanged(u"beneficiaries/0/fields/10"_s, shortDate);
        Parts parts = insuredParts();
        parts["82"] = "19850000";
        parts["85"] = "850514";
        const CardContent card = cardOf(person(parts, coverageParts()));
        QCOMPARE(textsAt(beneficiary + "ident/naissance/date", card, map), QString());
        QCOMPARE(textsAt(beneficiary + "ident/naissance/dateEnCarte", card, map), u"\"850514\""_s);
        for (const char* incomplete : {"850500", "850014", "8505  ", "85    "}) {
            parts["85"] = incomplete;
            QCOMPARE(textsAt(beneficiary + "ident/naissance/dateEnCarte", cardOf(person(parts, coverageParts())), map),
                     QString());
        }
    }

    void aChildWithoutADateOfBirthDoesNotRefuseTheCard()
    {
        Parts parts = insuredParts();
        for (const QByteArray& date : {QByteArray("00000000"), QByteArray(8, ' '), QByteArray()}) {
            parts["82"] = date;
            QCOMPARE(gapOf(cardOf(insured() + person(parts, {{"80", "6"}}))), QString());
            QCOMPARE(missingIn(cardOf(person(parts, coverageParts()))), QStringList(u"ident/naissance/date"_s));
        }
        parts.erase("82");
        QCOMPARE(gapOf(cardOf(insured() + person(parts, {{"80", "6"}}))), QString());
    }

    void theShortDateOfBirthIsSufficient()
    {
        const CardMap map =
            mapChanged(u"beneficiaries/0/fields/2"_s, QJsonObject{{u"path"_s, u"ident/naissance/dateEnCarte"_s},
                                                                  {u"tag"_s, u"82"_s},
                                                                  {u"form"_s, u"short-date"_s}});
        QCOMPARE(gapOf(cardOf(insured()), map), QString());
    }

    void missingFieldsAreReportedWithoutValues()
    {
        const auto document = cardDocument(smallCardMap(), cardOf(person(Parts{{"80", "SPECIMEN"}}, {})));
        QVERIFY(!document);
        QCOMPARE(document.error().kind, CardGap::Kind::Missing);
        QVERIFY(document.error().explanation.startsWith(u"il manque à l’assuré : "_s));
        QVERIFY(!document.error().explanation.contains(u"SPECIMEN"_s));
    }

    void aCardWithoutBeneficiariesGivesADocumentThatTheParserRefuses()
    {
        const auto document = cardDocument(smallCardMap(), cardOf(QByteArray(64, '\xFF')));
        QVERIFY(document);
        const auto xml = XmlDocument::fromText(*document);
        QVERIFY(xml);
        const auto record = parseCardDocument(&*xml);
        QVERIFY(!record);
        QVERIFY(xml->rootElement().firstNode("/T_AsnDonneesVitale/tech/numSerie"));
    }

    void aCardWithoutItsFileOfBeneficiariesIsRefused()
    {
        const CardContent card{{serialId, ""}};
        QCOMPARE(gapOf(card), u"la carte ne montre aucun bénéficiaire"_s);
        QCOMPARE(missingIn(card), QStringList(u"listeBenef/T_AsnBeneficiaire"_s));
    }

    void recordsOfASecondFileAreMatchedByTheirKey()
    {
        const CardMap map = mapWithSource(exemptionSource(true));
        CardContent card = cardOf(insured() + child());
        const std::string path = beneficiary + "amo/libelleExo";
        card[smallCardFile(3)] = exemption("Zo\xE9", "b") + exemption("H\xE9l\xE8ne", "a");
        QCOMPARE(textsAt(path, card, map), u"\"a\" \"b\""_s);
        card[smallCardFile(3)] = exemption("Zo\xE9", "b");
        QCOMPARE(textsAt(path, card, map), u"\"b\""_s);
        card.erase(smallCardFile(3));
        QCOMPARE(textsAt(path, card, map), QString());
        card[smallCardFile(3)] = "\x66\x01";
        QCOMPARE(gapOf(card, map), u"fichier « couverture » : valeur tronquée"_s);
    }

    void withoutAKeyTheFirstRecordAppliesToEveryPerson()
    {
        const CardMap map = mapWithSource(exemptionSource(false));
        CardContent card = cardOf(insured() + child());
        card[smallCardFile(3)] = tlv("66", tlv("81", "a")) + tlv("66", tlv("81", "b"));
        QCOMPARE(textsAt(beneficiary + "amo/libelleExo", card, map), u"\"a\" \"a\""_s);
    }
};

template class RunnableTests<tst_CardDocument, QCoreApplication>;
#include "tst_carddocument.moc"
