#include "service/check/MapCheck.h"
#include "service/embedded/SiteMaps.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/PersonsCard.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

QStringList faultsOf(const CheckReport& report)
{
    QStringList lines;
    for (const CheckFault& fault : report.faults)
        lines.append(fault.place.isEmpty() ? fault.reason : u"%1 : %2"_s.arg(fault.place, fault.reason));
    return lines;
}

QStringList faultsOfMap(const QByteArray& json)
{
    return faultsOf(checkCardMap(json, std::nullopt));
}

QByteArray soundMap()
{
    return QJsonDocument(smallMap()).toJson();
}

RecordedCard recorded(const CardContent& content)
{
    return {.applications = {smallCardApplication}, .files = content};
}

QStringList faultsOfCard(const RecordedCard& card, const QByteArray& json = soundMap())
{
    return faultsOf(checkCardMap(json, card));
}

QString factsOf(const CheckReport& report)
{
    QStringList facts;
    for (const CheckReport::Fact& fact : report.facts)
        facts.append(fact.label + u" = "_s + fact.value);
    return facts.join(u"; "_s);
}

} // namespace

class tst_MapCheck : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aSoundMapHasNoFault()
    {
        const CheckReport report = checkCardMap(soundMap(), std::nullopt);
        QCOMPARE(faultsOf(report), QStringList());
        QCOMPARE(report.remarks, QStringList(u"aucune carte n’a été lue avec ce plan (voir --card)"_s));
        QCOMPARE(factsOf(report), u"Carte = Carte d’essai, version 7; Application = F0 00 00 00 00; Fichiers = 2"_s);
    }

    void theMapsThatComeWithItHaveNoFault()
    {
        for (const QString& name : {u"specimen"_s, u"vitale2"_s}) {
            const auto json = readCardMapFile(QStringLiteral(PELMORA_STAGE_SHARE "/maps/") + name + u".json"_s);
            QVERIFY(json);
            QCOMPARE(faultsOfMap(*json), QStringList());
        }
    }

    void malformedJsonIsToldWithItsLine()
    {
        const QStringList faults = faultsOfMap("{\n  \"format\": 1,\n  \"name\": }\n");
        QCOMPARE(faults.size(), 1);
        QVERIFY2(faults.first().startsWith(u"ligne 3, octet 11 : ce n’est pas du JSON ("_s),
                 qPrintable(faults.first()));
        QVERIFY(faultsOfMap("").first().startsWith(u"ligne 1, octet 0 : ce n’est pas du JSON ("_s));
    }

    void everyFaultIsTold()
    {
        QJsonObject map = smallMap();
        map.insert(u"name"_s, QString());
        map.insert(u"plan"_s, 1);
        map = withValue(map, {u"files"_s, u"1"_s, u"file"_s}, u"0"_s).toObject();
        map = withValue(map, {u"beneficiaries"_s, u"0"_s, u"fields"_s, u"3"_s, u"form"_s}, u"nombre"_s).toObject();
        map = withValue(map, {u"beneficiaries"_s, u"0"_s, u"fields"_s, u"4"_s, u"tag"_s}, u"9"_s).toObject();
        QCOMPARE(faultsOfMap(QJsonDocument(map).toJson()),
                 (QStringList{u"clé inconnue « plan »"_s, u"name : un texte est attendu"_s,
                              u"files[1].file : 2 octets en hexadécimal sont attendus"_s,
                              u"beneficiaries[0].fields[3].form : forme inconnue « nombre »"_s,
                              u"beneficiaries[0].fields[4].tag : « 9 » n’est pas une étiquette"_s}));
    }

    void aFaultIsNotToldTwice_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QJsonValue>("value");
        QTest::addColumn<QString>("fault");
        const QJsonValue none(QJsonValue::Undefined);
        QTest::newRow("no object") << u"files/1"_s << QJsonValue(1) << u"files[1] : un objet est attendu"_s;
        QTest::newRow("no tag") << u"beneficiaries/0/fields/3/tag"_s << none
                                << u"beneficiaries[0].fields[3].tag : un texte est attendu"_s;
        QTest::newRow("no form") << u"beneficiaries/0/fields/3/form"_s << none
                                 << u"beneficiaries[0].fields[3].form : un texte est attendu"_s;
        QTest::newRow("no path") << u"values/0/path"_s << none << u"values[0].path : un texte est attendu"_s;
        QTest::newRow("no file") << u"values/0/file"_s << none << u"values[0].file : un texte est attendu"_s;
        QTest::newRow("blank file") << u"beneficiaries/0/file"_s << QJsonValue(u" "_s)
                                    << u"beneficiaries[0].file : un texte est attendu"_s;
        QTest::newRow("two files without a number")
            << u"files"_s
            << QJsonValue(QJsonArray{
                   QJsonObject{{u"name"_s, u"série"_s}, {u"application"_s, u"F000000000"_s}, {u"file"_s, u"0001"_s}},
                   QJsonObject{{u"name"_s, u"personnes"_s}, {u"application"_s, u"F000000000"_s}, {u"file"_s, u"x"_s}}})
            << u"files[1].file : 2 octets en hexadécimal sont attendus"_s;
    }
    void aFaultIsNotToldTwice()
    {
        QFETCH(const QString, path);
        QFETCH(const QJsonValue, value);
        QFETCH(const QString, fault);
        const QStringList faults = faultsOfMap(mapWith(path, value));
        QVERIFY2(faults.count(fault) == 1, qPrintable(faults.join(u'\n')));
        // Another entry may name the file that is malformed.
        for (const QString& other : faults)
            QVERIFY2(other == fault || other.contains(u"fichier inconnu « personnes »"_s), qPrintable(other));
    }

    void anElementThatNoFieldGivesIsARemark()
    {
        const CheckReport report =
            checkCardMap(mapWith(u"beneficiaries/0/fields/6"_s, QJsonValue(QJsonValue::Undefined)), std::nullopt);
        QCOMPARE(report.remarks.first(),
                 u"aucun champ ne donne « amo/codeRegime » : toute carte lue avec ce plan est refusée"_s);
        QVERIFY(report.isSound());
    }

    void aDateOfBirthMayBeOfEitherForm()
    {
        const QString remark =
            u"aucun champ ne donne « ident/naissance/date » ou « ident/naissance/dateEnCarte » : toute "
            "carte lue avec ce plan est refusée"_s;
        const QString path = u"beneficiaries/0/fields/2"_s;
        QVERIFY(checkCardMap(mapWith(path, QJsonValue(QJsonValue::Undefined)), std::nullopt).remarks.contains(remark));
        const QJsonObject shortDate{
            {u"path"_s, u"ident/naissance/dateEnCarte"_s}, {u"tag"_s, u"82"_s}, {u"form"_s, u"short-date"_s}};
        QVERIFY(!checkCardMap(mapWith(path, shortDate), std::nullopt).remarks.contains(remark));
    }

    void aFileWithoutAUseIsARemark()
    {
        const QJsonObject file{{u"name"_s, u"photo"_s}, {u"application"_s, u"F000000000"_s}, {u"file"_s, u"0009"_s}};
        QCOMPARE(checkCardMap(mapWith(u"files/2"_s, file), std::nullopt).remarks.first(),
                 u"le fichier « photo » est lu, mais ne sert pas"_s);
    }

    void aCardIsReadWithTheMap()
    {
        const CheckReport report = checkCardMap(soundMap(), recorded(cardOf(insured() + child())));
        QCOMPARE(faultsOf(report), QStringList());
        QCOMPARE(report.remarks, QStringList());
        QVERIFY(factsOf(report).endsWith(u"; Bénéficiaires lus = 2"_s));
    }

    void whatIsWrongWithTheCardIsToldWithItsPlace()
    {
        QCOMPARE(faultsOfCard({.applications = {"other"}, .files = {}}),
                 QStringList(u"carte : elle n’a pas l’application F0 00 00 00 00 de ce plan"_s));
        CardContent card = cardOf(insured());
        card.erase(personsId);
        QCOMPARE(faultsOfCard(recorded(card)),
                 QStringList(u"carte, fichier « personnes » : il manque (F000000000/0002)"_s));
        card = cardOf(insured());
        card.erase(serialId);
        QCOMPARE(faultsOfCard(recorded(card)),
                 (QStringList{u"carte, fichier « série » : il manque (F000000000/0001)"_s,
                              u"carte : tous les fichiers qui l’identifient manquent"_s}));
        QCOMPARE(faultsOfCard(recorded(cardOf(insured() + QByteArray::fromHex("6505")))),
                 QStringList(u"carte : fichier « personnes » : valeur tronquée"_s));
        Parts parts = insuredParts();
        parts["82"] = "19851399";
        const QString fault = faultsOfCard(recorded(cardOf(person(parts, coverageParts())))).join(u'\n');
        QCOMPARE(fault, u"carte : bénéficiaire 1 : le champ « ident/naissance/date » n’est pas de la forme attendue"_s);
    }

    void aPointersFileThatIsDamagedIsTold()
    {
        const QByteArray json = mapWith(u"pointers"_s, u"série"_s);
        const QString fault = faultsOfCard(recorded(cardOf(insured())), json).join(u'\n');
        QVERIFY2(fault.startsWith(u"carte : fichier des pointeurs : "_s), qPrintable(fault));
    }

    void aRecordedCardIsAFolderOfApplications()
    {
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"f000000000/0001"_s), "serial"));
        QVERIFY(writeFile(folder.filePath(u"F000000001/2f02"_s), "other"));
        const auto card = readRecordedCard(folder.path());
        QVERIFY(card);
        QCOMPARE(card->applications.size(), 2);
        QVERIFY(card->files ==
                (CardContent{{serialId, "serial"}, {{QByteArray::fromHex("F000000001"), 0x2F02}, "other"}}));
    }

    void anotherFolderIsNoRecordedCard()
    {
        const QTemporaryDir folder;
        QCOMPARE(readRecordedCard(folder.filePath(u"absent"_s)).error(),
                 folder.filePath(u"absent"_s) + u" n’est pas un dossier"_s);
        QVERIFY(writeFile(folder.filePath(u"F000000000/000001"_s), ""));
        QVERIFY(readRecordedCard(folder.path()).error().endsWith(u"000001 n’a pas le nom d’un fichier de carte"_s));
        QVERIFY(writeFile(folder.filePath(u"Documents/0001"_s), ""));
        QVERIFY(readRecordedCard(folder.path()).error().endsWith(u"Documents n’a pas le nom d’une application"_s));
    }
};

template class RunnableTests<tst_MapCheck, void>;
#include "tst_mapcheck.moc"
