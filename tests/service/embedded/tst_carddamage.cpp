#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/PersonsCard.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

// Damaged cards, each with the reason in the log.
class tst_CardDamage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aRepeatedFieldIsDamage()
    {
        const CardContent card = cardOf(person(insuredParts(), coverageParts(), tlv("80", "AUTRE")));
        QVERIFY(isDamaged(card));
        QCOMPARE(gapOf(card), u"bénéficiaire 1 : le champ « ident/nomUsuel » est là plusieurs fois"_s);
    }

    void anUnknownObjectIsDamage_data()
    {
        QTest::addColumn<QByteArray>("persons");
        QTest::addColumn<QString>("tags");
        QTest::newRow("beside the persons") << insured() + tlv("66", "") << u"66"_s;
        QTest::newRow("a person with another tag") << insured() + tlv("45", "x") << u"45"_s;
        QTest::newRow("in a person") << person(insuredParts(), coverageParts(), tlv("9F7F", "x")) << u"65/9F7F"_s;
        Parts coverage = coverageParts();
        coverage["95"] = "x";
        QTest::newRow("further in") << person(insuredParts(), coverage) << u"65/A1/95"_s;
        QTest::newRow("in a period") << person(insuredParts(), coverageParts(), tlv("A2", tlv("81", "x")))
                                     << u"65/A2/81"_s;
    }
    void anUnknownObjectIsDamage()
    {
        QFETCH(const QByteArray, persons);
        QFETCH(const QString, tags);
        QVERIFY(isDamaged(cardOf(persons)));
        QCOMPARE(gapOf(cardOf(persons)), u"fichier « personnes » : objet inattendu "_s + tags);
        // Tags that the map ignores are accepted.
        QCOMPARE(gapOf(cardOf(persons), mapChanged(u"files/1/ignored"_s, QJsonArray{u"5F20"_s, tags})), QString());
    }

    void unknownObjectsInAFileWithoutPersonsAreAccepted()
    {
        QCOMPARE(gapOf({{serialId, tlv("5A", "x") + tlv("66", tlv("80", "x"))}, {personsId, insured()}}), QString());
    }

    void exactlyOneBeneficiaryIsTheInsuredPerson()
    {
        QVERIFY(isDamaged(cardOf(child() + child())));
        QCOMPARE(gapOf(cardOf(child() + child())), u"aucun bénéficiaire n’est l’assuré"_s);
        QVERIFY(isDamaged(cardOf(insured() + child() + insured())));
        QCOMPARE(gapOf(cardOf(insured() + child() + insured())), u"plusieurs assurés : bénéficiaires 1, 3"_s);
        Parts coverage = coverageParts();
        coverage["80"] = "6";
        QCOMPARE(gapOf(cardOf(person(insuredParts(), coverage) + child())), u"aucun bénéficiaire n’est l’assuré"_s);
        // Without any quality, the map is incomplete.
        coverage.erase("80");
        QCOMPARE(gapOf(cardOf(person(insuredParts(), coverage))), u"il manque à l’assuré : amo/qualBenef"_s);
    }

    void aFieldOfAnotherLengthThanItsFormIsDamage_data()
    {
        QTest::addColumn<QByteArray>("tag");
        QTest::addColumn<bool>("isOfCoverage");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("element");
        const auto row = [](const char* name, const char* tag, bool isOfCoverage, const QByteArray& value,
                            const QString& element) {
            QTest::newRow(name) << QByteArray(tag) << isOfCoverage << value << element;
        };
        row("long scheme", "81", true, "0102", u"amo/codeRegime"_s);
        row("short scheme", "81", true, "1", u"amo/codeRegime"_s);
        row("long fund", "82", true, "751751751751", u"amo/caisse"_s);
        row("short fund", "82", true, "75", u"amo/caisse"_s);
        row("long centre", "83", true, "88018801", u"amo/centreCarte"_s);
        row("long management", "84", true, "101", u"amo/codeGestion"_s);
        row("long quality", "80", true, "00", u"amo/qualBenef"_s);
        row("quality outside its set", "80", true, "7", u"amo/qualBenef"_s);
        row("long rank", "83", false, "11", u"ident/rangDeNaissance"_s);
        row("long name", "80", false, QByteArray(81, 'A'), u"ident/nomUsuel"_s);
        row("long number", "93", false, "28505751161231234", u"ident/nir"_s);
    }
    void aFieldOfAnotherLengthThanItsFormIsDamage()
    {
        QFETCH(const QByteArray, tag);
        QFETCH(const bool, isOfCoverage);
        QFETCH(const QByteArray, value);
        QFETCH(const QString, element);
        Parts parts = insuredParts();
        Parts coverage = coverageParts();
        (isOfCoverage ? coverage : parts)[tag] = value;
        const CardContent card = cardOf(person(parts, coverage) + child());
        QVERIFY(isDamaged(card));
        QCOMPARE(gapOf(card), u"bénéficiaire 1 : le champ « %1 » n’est pas de la forme attendue"_s.arg(element));
    }

    void everyListedQualityIsAccepted()
    {
        for (const char quality : {'1', '2', '3', '4', '5', '6', '8', '9'}) {
            const QByteArray other = person(insuredParts(), {{"80", QByteArray(1, quality)}});
            QCOMPARE(textsAt(beneficiary + "amo/qualBenef", cardOf(insured() + other)),
                     u"\"0\" \"%1\""_s.arg(QLatin1Char(quality)));
        }
    }

    void anImpossibleDateIsDamage_data()
    {
        QTest::addColumn<QByteArray>("date");
        for (const char* date : {"19851301", "19854200", "19850532", "19850230", "19850229", "19000229", "19850631",
                                 "    1314", "198500 9X"})
            QTest::newRow(date) << QByteArray(date);
    }
    void anImpossibleDateIsDamage()
    {
        QFETCH(const QByteArray, date);
        Parts parts = insuredParts();
        parts["82"] = date;
        QVERIFY(isDamaged(cardOf(person(parts, coverageParts()))));
        QVERIFY(isDamaged(cardOf(insured() + person(parts, {{"80", "6"}}))));
        // The same for the card's short form.
        const CardMap map = mapChanged(
            u"beneficiaries/0/fields/2"_s,
            QJsonObject{{u"path"_s, u"ident/naissance/dateEnCarte"_s}, {u"tag"_s, u"82"_s}, {u"form"_s, u"text"_s}});
        parts["82"] = date.sliced(2);
        const QString refusal =
            u"bénéficiaire 1 : le champ « ident/naissance/dateEnCarte » n’est pas de la forme attendue"_s;
        if (date != "19000229")
            QCOMPARE(gapOf(cardOf(person(parts, coverageParts())), map), refusal);
    }

    void anEmptyFileOfPersonsIsDamage()
    {
        QVERIFY(isDamaged(cardOf("")));
        QCOMPARE(gapOf(cardOf("")), u"fichier « personnes » : vide"_s);
    }

    void moreThanNinetyNineBeneficiariesAreDamage()
    {
        QCOMPARE(gapOf(cardOf(insured() + child().repeated(98))), QString());
        QCOMPARE(gapOf(cardOf(insured() + child().repeated(99))), u"plus de 99 bénéficiaires"_s);
        QVERIFY(isDamaged(cardOf(QByteArray::fromHex("6500").repeated(16000))));
    }

    void damagedObjectsAreReportedWithTheirFile()
    {
        QVERIFY(isDamaged(cardOf(insured().chopped(1))));
        QCOMPARE(gapOf(cardOf(insured().chopped(1))), u"fichier « personnes » : valeur tronquée"_s);
        QCOMPARE(gapOf({{serialId, "\x5F"}, {personsId, insured()}}), u"fichier « série » : étiquette tronquée"_s);
    }

    void aFileCutAtAnyByteIsDamage()
    {
        const QByteArray whole = insured();
        for (qsizetype size = 1; size < whole.size(); ++size)
            QVERIFY2(isDamaged(cardOf(whole.first(size))), qPrintable(QString::number(size)));
    }

    void aValueOfAnotherFormIsDamage()
    {
        Parts parts = insuredParts();
        parts["80"] = "SPECI\x01MEN";
        QVERIFY(isDamaged(cardOf(person(parts, coverageParts()))));
        QCOMPARE(gapOf(cardOf(person(parts, coverageParts()))),
                 u"bénéficiaire 1 : le champ « ident/nomUsuel » n’est pas de la forme attendue"_s);
        QVERIFY(isDamaged(cardOf(person(insuredParts(), coverageParts(), tlv("A2", tlv("80", "x"))))));
    }

    void aRecordWhosePersonIsInDoubtIsDamage()
    {
        const CardMap map = mapWithSource(exemptionSource(true));
        CardContent card = cardOf(insured() + child());
        const auto damageWith = [&card, &map](const QByteArray& records) {
            card[smallCardFile(3)] = records;
            return gapOf(card, map);
        };
        const QString second = u"fichier « couverture », enregistrement 2 : "_s;
        const QByteArray sound = exemption("Zo\xE9", "b");
        QCOMPARE(damageWith(sound + exemption("x", "c")), second + u"il n’est d’aucun bénéficiaire"_s);
        QCOMPARE(damageWith(sound + tlv("66", tlv("81", "c"))), second + u"rien ne dit de quel bénéficiaire il est"_s);
        QCOMPARE(damageWith(sound + exemption("Zo\xE9", "c")), second + u"le bénéficiaire 2 en a déjà un"_s);
        QCOMPARE(damageWith(sound + tlv("66", tlv("80", "Zo\xE9") + tlv("80", "x"))),
                 second + u"rien ne dit de quel bénéficiaire il est"_s);
        QCOMPARE(damageWith(sound + tlv("46", "x")), u"fichier « couverture » : objet inattendu 46"_s);
        card = cardOf(QByteArray(16, '\xFF'));
        QCOMPARE(damageWith(sound), u"fichier « couverture », enregistrement 1 : il n’est d’aucun bénéficiaire"_s);
    }

    void aRecordWithTheQualityMustBelongToOnePerson()
    {
        Parts twin = insuredParts();
        CardContent card = cardOf(insured() + person(twin, {{"80", "6"}}));
        card[smallCardFile(3)] = exemption("H\xE9l\xE8ne", "a");
        QCOMPARE(textsAt(beneficiary + "amo/libelleExo", card, mapWithSource(exemptionSource(true))), u"\"a\" \"a\""_s);
        QJsonObject source = exemptionSource(true);
        QJsonArray fields = source.value(u"fields"_s).toArray();
        fields.append(QJsonObject{{u"path"_s, u"amo/qualBenef"_s}, {u"tag"_s, u"82"_s}, {u"form"_s, u"digits"_s}});
        source.insert(u"fields"_s, fields);
        QCOMPARE(gapOf(card, mapWithSource(source)),
                 u"fichier « couverture », enregistrement 1 : il est de plusieurs bénéficiaires"_s);
    }
};

template class RunnableTests<tst_CardDamage, QCoreApplication>;
#include "tst_carddamage.moc"
