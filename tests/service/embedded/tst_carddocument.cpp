#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "service/embedded/CardDocument.h"
#include "tests/service/embedded/CardBytes.h"
#include "tests/service/embedded/MapJson.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QByteArray application = QByteArray::fromHex("F000000000");
const CardFileId serialId{application, 1};
const CardFileId personsId{application, 2};

CardMap mapOf(const QJsonObject& json)
{
    return parseCardMap(QJsonDocument(json).toJson()).value();
}

CardMap mapChanged(const QString& path, const QJsonValue& value)
{
    return parseCardMap(mapWith(path, value)).value();
}

/// The parts of a person, by tag; those of the coverage are in A1.
using Parts = std::map<QByteArray, QByteArray>;

QByteArray objectsOf(const Parts& parts)
{
    QByteArray bytes;
    for (const auto& [tag, value] : parts)
        bytes += tlv(tag.constData(), value);
    return bytes;
}

Parts insuredParts()
{
    return {{"80", "SPECIMEN"}, {"81", "H\xE9l\xE8ne"}, {"82", "19850514"}, {"83", "1"}, {"93", "2850575116123"}};
}

Parts coverageParts()
{
    return {{"80", "0"}, {"81", "01"}, {"82", "751"}, {"83", "8801"}, {"84", "10"}};
}

QByteArray person(const Parts& parts, const Parts& coverage, const QByteArray& more = {})
{
    return tlv("65", objectsOf(parts) + tlv("A1", objectsOf(coverage)) + more);
}

QByteArray insured()
{
    return person(insuredParts(), coverageParts());
}

QByteArray child()
{
    Parts parts = insuredParts();
    parts["81"] = "Zo\xE9";
    parts.erase("93");
    return person(parts, {{"80", "6"}});
}

CardContent cardOf(const QByteArray& persons)
{
    return {{serialId, tlv("5A", QByteArray::fromHex("0012AB"))}, {personsId, persons}};
}

/// What is wrong with the card; nothing when there is a document.
QString gapOf(const CardContent& content, const CardMap& map = mapOf(smallMap()))
{
    const auto document = cardDocument(map, content);
    return document ? QString() : document.error().explanation;
}

QStringList missingIn(const CardContent& content)
{
    const auto document = cardDocument(mapOf(smallMap()), content);
    return document || document.error().kind != CardGap::Kind::Missing ? QStringList() : document.error().missing;
}

bool isDamaged(const CardContent& content)
{
    const auto document = cardDocument(mapOf(smallMap()), content);
    return !document && document.error().kind == CardGap::Kind::Damaged && document.error().missing.isEmpty();
}

/// Texts of the elements at a path in the document, each in quotes; or what is wrong.
QString textsAt(const std::string& path, const CardContent& content, const CardMap& map = mapOf(smallMap()))
{
    const auto document = cardDocument(map, content);
    if (!document)
        return document.error().explanation;
    const auto xml = XmlDocument::fromText(*document);
    QStringList texts;
    for (const XmlNode& node : xml->documentNode().nodes("T_AsnDonneesVitale/" + path))
        texts.append(u'"' + node.stringValue().trimmed() + u'"');
    return texts.join(u' ');
}

const std::string beneficiary = "listeBenef/T_AsnBeneficiaire/";

/// The small map with a second source of records.
CardMap mapWithSource(const QJsonObject& source)
{
    const QJsonObject json = withValue(smallMap(), {u"files"_s, u"2"_s},
                                       QJsonObject{{u"name"_s, u"couverture"_s},
                                                   {u"application"_s, u"F000000000"_s},
                                                   {u"file"_s, u"0003"_s},
                                                   {u"required"_s, false}})
                                 .toObject();
    return mapOf(withValue(json, {u"beneficiaries"_s, u"1"_s}, source).toObject());
}

QJsonObject exemptionSource(bool isLinked)
{
    const QJsonObject field{{u"path"_s, u"amo/libelleExo"_s}, {u"tag"_s, u"81"_s}, {u"form"_s, u"text"_s}};
    QJsonObject source{{u"file"_s, u"couverture"_s}, {u"record"_s, u"66"_s}, {u"fields"_s, QJsonArray{field}}};
    if (isLinked)
        source.insert(u"link"_s, QJsonObject{{u"own"_s, u"80"_s}, {u"beneficiary"_s, u"81"_s}});
    return source;
}

QByteArray exemption(const QByteArray& key, const QByteArray& label)
{
    return tlv("66", tlv("80", key) + tlv("81", label));
}

} // namespace

class TestCardDocument : public QObject
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

    void aFieldThatTheCardDoesNotCarryIsNoElement()
    {
        QCOMPARE(textsAt(beneficiary + "amo/libelleExo", cardOf(insured())), QString());
        QCOMPARE(textsAt(beneficiary + "ident/nomPatronymique", cardOf(insured())), QString());
        QCOMPARE(textsAt("tech", {{serialId, ""}, {personsId, insured()}}), QString());
        QCOMPARE(textsAt("tech", {{personsId, insured()}}), QString());
    }

    void markupOnTheCardStaysText()
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

    void ofAFieldThatIsThereTwiceTheFirstCounts()
    {
        const CardContent card = cardOf(person(insuredParts(), coverageParts(), tlv("80", "AUTRE")));
        QCOMPARE(textsAt(beneficiary + "ident/nomUsuel", card), u"\"SPECIMEN\""_s);
    }

    void ofTwoPlacesForAnElementTheFirstThatHoldsSomethingCounts()
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

    void unknownTagsAreNobodysBusiness()
    {
        const QByteArray more = tlv("9F7F", "\x01\x02") + tlv("BF20", tlv("80", "x"));
        QCOMPARE(gapOf(cardOf(tlv("66", more) + person(insuredParts(), coverageParts(), more) + tlv("80", "x"))),
                 QString());
    }

    void whatAnAttestationShowsOfTheInsuredPersonIsNeeded_data()
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
    void whatAnAttestationShowsOfTheInsuredPersonIsNeeded()
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

    void zerosAreNoNumberSchemeOrDate()
    {
        Parts parts = insuredParts();
        Parts coverage = coverageParts();
        parts["82"] = "00000000";
        parts["93"] = "0000000000000";
        coverage["81"] = "00";
        QCOMPARE(missingIn(cardOf(person(parts, coverage))),
                 QStringList({u"ident/nir"_s, u"amo/codeRegime"_s, u"ident/naissance/date"_s}));
    }

    void anotherPersonNeedsWhatALineShows()
    {
        Parts parts = insuredParts();
        parts.erase("83");
        parts.erase("82");
        parts.erase("93");
        QCOMPARE(gapOf(cardOf(insured() + person(parts, {}))),
                 u"il manque au bénéficiaire 2 : ident/rangDeNaissance, ident/naissance/date"_s);
        QCOMPARE(gapOf(cardOf(insured() + child() + person({}, {}))),
                 u"il manque au bénéficiaire 3 : ident/nomUsuel, ident/prenomUsuel, ident/rangDeNaissance, "
                 "ident/naissance/date"_s);
    }

    void theInsuredPersonMayStandAnywhere()
    {
        QCOMPARE(gapOf(cardOf(child() + insured())), QString());
        Parts coverage = coverageParts();
        coverage.erase("82");
        QCOMPARE(gapOf(cardOf(child() + person(insuredParts(), coverage))), u"il manque à l’assuré : amo/caisse"_s);
        // Without any, it is the first one, as it is for the application.
        QCOMPARE(gapOf(cardOf(child() + child())), u"il manque à l’assuré : ident/nir, amo/codeRegime, amo/caisse, "
                                                   "amo/centreCarte, amo/codeGestion"_s);
        coverage = coverageParts();
        coverage["80"] = "6";
        QCOMPARE(gapOf(cardOf(person(insuredParts(), coverage) + child())), QString());
    }

    void theShortDateOfBirthWillDo()
    {
        const CardMap map = mapChanged(u"beneficiaries/0/fields/2/path"_s, u"ident/naissance/dateEnCarte"_s);
        QCOMPARE(gapOf(cardOf(insured()), map), QString());
    }

    void whatIsMissingIsNamedWithoutAnyValue()
    {
        const auto document = cardDocument(mapOf(smallMap()), cardOf(person({{"80", "SPECIMEN"}}, {})));
        QVERIFY(!document);
        QCOMPARE(document.error().kind, CardGap::Kind::Missing);
        QVERIFY(document.error().explanation.startsWith(u"il manque à l’assuré : "_s));
        QVERIFY(!document.error().explanation.contains(u"SPECIMEN"_s));
    }

    void aCardWithoutBeneficiariesIsTheApplicationsAffair()
    {
        const auto document = cardDocument(mapOf(smallMap()), cardOf(QByteArray(64, '\xFF')));
        QVERIFY(document);
        const auto xml = XmlDocument::fromText(*document);
        QVERIFY(xml);
        const auto record = parseCardDocument(&*xml);
        QVERIFY(!record);
        QVERIFY(xml->rootElement().firstNode("/T_AsnDonneesVitale/tech/numSerie"));
    }

    void aCardThatHidesItsBeneficiariesIsRefused()
    {
        const CardContent card{{serialId, ""}};
        QCOMPARE(gapOf(card), u"la carte ne montre aucun bénéficiaire"_s);
        QCOMPARE(missingIn(card), QStringList(u"listeBenef/T_AsnBeneficiaire"_s));
    }

    void nobodyHasThatManyBeneficiaries()
    {
        QCOMPARE(gapOf(cardOf(insured() + child().repeated(98))), QString());
        QCOMPARE(gapOf(cardOf(insured() + child().repeated(99))), u"plus de 99 bénéficiaires"_s);
        QVERIFY(isDamaged(cardOf(QByteArray::fromHex("6500").repeated(16000))));
    }

    void damagedObjectsAreToldWithTheirFile()
    {
        QVERIFY(isDamaged(cardOf(insured().chopped(1))));
        QCOMPARE(gapOf(cardOf(insured().chopped(1))), u"fichier « personnes » : valeur tronquée"_s);
        QCOMPARE(gapOf({{serialId, "\x5F"}, {personsId, insured()}}), u"fichier « série » : étiquette tronquée"_s);
    }

    void everyCutOfTheFileIsDamage()
    {
        const QByteArray whole = insured();
        for (qsizetype size = 1; size < whole.size(); ++size)
            QVERIFY2(isDamaged(cardOf(whole.first(size))), qPrintable(QString::number(size)));
    }

    void aValueOfAnotherFormIsDamageToo()
    {
        Parts parts = insuredParts();
        parts["80"] = "SPECI\x01MEN";
        QVERIFY(isDamaged(cardOf(person(parts, coverageParts()))));
        QCOMPARE(gapOf(cardOf(person(parts, coverageParts()))),
                 u"le champ « ident/nomUsuel » n’est pas de la forme attendue"_s);
        QVERIFY(isDamaged(cardOf(person(insuredParts(), coverageParts(), tlv("A2", tlv("80", "x"))))));
    }

    void whatASecondFileSaysIsFoundByTheSameBytes()
    {
        const CardMap map = mapWithSource(exemptionSource(true));
        CardContent card = cardOf(insured() + child());
        const std::string path = beneficiary + "amo/libelleExo";
        card[{application, 3}] = exemption("x", "non") + exemption("Zo\xE9", "b") + exemption("H\xE9l\xE8ne", "a") +
                                 exemption("Zo\xE9", "c") + tlv("66", tlv("81", "d"));
        QCOMPARE(textsAt(path, card, map), u"\"a\" \"b\""_s);
        card[{application, 3}] = exemption("Zo", "b") + tlv("66", tlv("81", "d"));
        QCOMPARE(textsAt(path, card, map), QString());
        card.erase({application, 3});
        QCOMPARE(textsAt(path, card, map), QString());
        card[{application, 3}] = "\x66\x01";
        QCOMPARE(gapOf(card, map), u"fichier « couverture » : valeur tronquée"_s);
    }

    void withoutALinkTheFirstRecordHoldsForEveryone()
    {
        const CardMap map = mapWithSource(exemptionSource(false));
        CardContent card = cardOf(insured() + child());
        card[{application, 3}] = exemption("x", "a") + exemption("y", "b");
        QCOMPARE(textsAt(beneficiary + "amo/libelleExo", card, map), u"\"a\" \"a\""_s);
    }
};

QTEST_GUILESS_MAIN(TestCardDocument)
#include "tst_carddocument.moc"
