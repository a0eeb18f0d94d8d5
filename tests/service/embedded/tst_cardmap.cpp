#include "card/CardKeys.h"
#include "service/embedded/CardElements.h"
#include "service/embedded/CardMap.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/MapJson.h"

#include <QCoreApplication>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The parser's error; empty when there is a map.
QString refusalOf(const QByteArray& json)
{
    const std::expected<CardMap, QString> map = parseCardMap(json);
    return map ? QString() : map.error();
}

QStringList pathsOfTheRecord()
{
    QStringList paths;
    for (const BeneficiaryField& field : beneficiaryFields)
        paths.append(field.path.utf16().toString());
    return paths;
}

QStringList pathsOfTheElements()
{
    QStringList paths;
    for (const CardElement& element : CardElements::beneficiaryElements)
        paths.append(element.path.toString());
    return paths;
}

/// The paths of the insured person's values in the attestation's head.
QStringList pathsOfTheHead()
{
    QStringList paths;
    for (const RecordKey key : mainBeneficiaryKeys) {
        const auto* field = std::ranges::find(beneficiaryFields, key, &BeneficiaryField::key);
        paths.append(field->path.utf16().toString());
    }
    return paths;
}

/// Another value at a place of the small map, and the expected error.
struct Refusal
{
    const char* path = nullptr;
    QJsonValue value;
    QString sentence;
};

const QString array = u"un tableau qui n’est pas vide est attendu"_s;
const QString fiveToSixteen = u"5 à 16 octets en hexadécimal sont attendus"_s;
const QString two = u"2 octets en hexadécimal sont attendus"_s;
const QJsonValue none(QJsonValue::Undefined);

QList<Refusal> refusalsOfFiles()
{
    return {
        {"format", 2, u"format : 1 est attendu"_s},
        {"format", u"1"_s, u"format : 1 est attendu"_s},
        {"name", none, u"name : un texte est attendu"_s},
        {"name", u"  "_s, u"name : un texte est attendu"_s},
        {"version", 7, u"version : un texte est attendu"_s},
        {"application", u"F0000000"_s, u"application : "_s + fiveToSixteen},
        {"application", QString(34, u'0'), u"application : "_s + fiveToSixteen},
        {"application", u"F00000000"_s, u"application : "_s + fiveToSixteen},
        {"application", u"F00000000G"_s, u"application : "_s + fiveToSixteen},
        {"files", none, u"files : "_s + array},
        {"files", QJsonArray(), u"files : "_s + array},
        {"files", u"série"_s, u"files : "_s + array},
        {"files/0", 1, u"files[0] : un objet est attendu"_s},
        {"files/0/nom", u"x"_s, u"files[0] : clé inconnue « nom »"_s},
        {"files/0/name", none, u"files[0].name : un texte est attendu"_s},
        {"files/0/application", none, u"files[0].application : "_s + fiveToSixteen},
        {"files/1/file", none, u"files[1].file : "_s + two},
        {"files/1/file", u"02"_s, u"files[1].file : "_s + two},
        {"files/1/file", 2, u"files[1].file : "_s + two},
        {"files/1/file", u"0001"_s, u"files : fichier « personnes » en double"_s},
        {"files/1/name", u"série"_s, u"files : fichier « série » en double"_s},
        {"files/1/required", u"non"_s, u"files[1].required : true ou false est attendu"_s},
        {"files/1/ignored", u"80"_s, u"files[1].ignored : "_s + array},
        {"files/1/ignored", QJsonArray{u"65/9"_s}, u"files[1].ignored : « 9 » n’est pas une étiquette"_s},
        {"files/1/pointer", u"BENEF"_s, u"files[1].pointer : « application » et « file » sont de trop"_s},
        {"files/2", QJsonObject{{u"name"_s, u"a"_s}, {u"pointer"_s, u"NEUFLETTR"_s}},
         u"files[2].pointer : 1 à 8 caractères ASCII sont attendus"_s},
        {"files/2", QJsonObject{{u"name"_s, u"a"_s}, {u"pointer"_s, u"ÉTÉ"_s}},
         u"files[2].pointer : 1 à 8 caractères ASCII sont attendus"_s},
        {"files/2", QJsonObject{{u"name"_s, u"a"_s}, {u"pointer"_s, u"DROITS"_s}},
         u"pointers : le fichier des pointeurs manque"_s},
    };
}

QList<Refusal> refusalsOfContent()
{
    return {
        {"identity", none, u"identity : "_s + array},
        {"identity", QJsonArray(), u"identity : "_s + array},
        {"identity/0", u"droits"_s, u"identity : fichier inconnu « droits »"_s},
        {"identity/0", 1, u"identity : fichier inconnu «  »"_s},
        {"pointers", u"droits"_s, u"pointers : fichier inconnu « droits »"_s},
        {"values/0/file", u"droits"_s, u"values[0].file : fichier inconnu « droits »"_s},
        {"values/0/path", u"tech/serie"_s, u"values[0].path : élément inconnu « tech/serie »"_s},
        {"beneficiaries", none, u"beneficiaries : "_s + array},
        {"beneficiaries/0/file", none, u"beneficiaries[0].file : sans fichier des pointeurs, un fichier est attendu"_s},
        {"beneficiaries/0/file", u"droits"_s, u"beneficiaries[0].file : fichier inconnu « droits »"_s},
        {"beneficiaries/0/record", u"80"_s,
         u"beneficiaries[0].record : la dernière étiquette ne contient pas d’objets"_s},
        {"beneficiaries/0/link", QJsonObject{{u"own"_s, u"80"_s}, {u"beneficiary"_s, u"80"_s}},
         u"beneficiaries[0].link : la première source n’a pas de lien"_s},
        {"beneficiaries/1", QJsonObject{{u"file"_s, u"série"_s}, {u"record"_s, u"66"_s}, {u"link"_s, QJsonObject()}},
         u"beneficiaries[1].link.own : un texte est attendu"_s},
        {"beneficiaries/0/fields", QJsonObject(), u"beneficiaries[0].fields : "_s + array},
        {"beneficiaries/0/fields/3/path", u"ident/rang"_s,
         u"beneficiaries[0].fields[3].path : élément inconnu « ident/rang »"_s},
        {"beneficiaries/0/fields/3/tag", none, u"beneficiaries[0].fields[3].tag : un texte est attendu"_s},
        {"beneficiaries/0/fields/3/form", u"number "_s, QString()},
        {"beneficiaries/0/fields/3/form", u"Nombre"_s,
         u"beneficiaries[0].fields[3].form : forme inconnue « Nombre »"_s},
        {"beneficiaries/0/lists/0/path", u"ident/periodes"_s,
         u"beneficiaries[0].lists[0].path : élément inconnu « ident/periodes »"_s},
        {"beneficiaries/0/lists/0/fields/0/path", u"ident/nir"_s,
         u"beneficiaries[0].lists[0].fields[0].path : élément inconnu « ident/nir »"_s},
    };
}

} // namespace

class tst_CardMap : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theElementsAreThoseOfTheCardRecord() { QCOMPARE(pathsOfTheElements(), pathsOfTheRecord()); }

    void everyValueInTheAttestationsHeadIsNeeded()
    {
        for (const QString& path : pathsOfTheHead()) {
            const auto* element = std::ranges::find(CardElements::beneficiaryElements, path, &CardElement::path);
            QVERIFY2(element->need != CardNeed::Optional, qPrintable(path));
        }
    }

    void aMapHasTheValuesOfItsFile()
    {
        const std::expected<CardMap, QString> map = parseCardMap(QJsonDocument(smallMap()).toJson());
        QVERIFY2(map, qPrintable(map ? QString() : map.error()));
        const QByteArray id = QByteArray::fromHex("F000000000");
        QCOMPARE(map->name, u"Carte d’essai"_s);
        QCOMPARE(map->version, u"7"_s);
        QCOMPARE(map->application, id);
        QVERIFY(map->identity == std::vector({CardFileId{id, 1}}));
        QVERIFY(map->files == std::vector({CardFile{u"série"_s, CardFileId{id, 1}, {}, true, {}},
                                           CardFile{u"personnes"_s, CardFileId{id, 2}, {}, true, {}}}));
        QVERIFY(!map->pointers);
        QVERIFY(!map->wantsAllPointed());
        QCOMPARE(map->values.front().field.path, u"tech/numSerie"_s);
        QVERIFY(map->values.front().field.form == CardForm::Hexadecimal);
        const CardRecordSource& persons = map->beneficiaries.front();
        QCOMPARE(persons.file, u"personnes"_s);
        QVERIFY(persons.record == TagPath({0x65}));
        QVERIFY(persons.fields[5].tags == TagPath({0xA1, 0x80}));
        QVERIFY(persons.lists.front().record == TagPath({0xA2}));
        QCOMPARE(persons.lists.front().fields.front().path, u"debut"_s);
    }

    void aFileMayBeOptionalOrFoundByItsName()
    {
        QJsonObject map = smallMap();
        map.insert(u"pointers"_s, u"série"_s);
        map.insert(
            u"files"_s,
            QJsonArray{map.value(u"files"_s).toArray().first(),
                       QJsonObject{{u"name"_s, u"personnes"_s}, {u"pointer"_s, u"BENEF"_s}, {u"required"_s, false}}});
        const std::expected<CardMap, QString> parsed = parseCardMap(QJsonDocument(map).toJson());
        QVERIFY2(parsed, qPrintable(parsed ? QString() : parsed.error()));
        QVERIFY(parsed->files[1] == (CardFile{u"personnes"_s, {}, "BENEF", false, {}}));
        QVERIFY(parsed->pointers == parsed->identity.front());
    }

    void everyFormHasAName()
    {
        const QStringList names{u"text"_s,   u"utf8"_s, u"digits"_s,     u"packed-digits"_s,
                                u"number"_s, u"date"_s, u"short-date"_s, u"hexadecimal"_s};
        for (const QString& name : names)
            QCOMPARE(refusalOf(mapWith(u"beneficiaries/0/fields/0/form"_s, name)), QString());
    }

    void aFileThatIsNotAMapIsRefused()
    {
        QVERIFY(refusalOf("").startsWith(u"ce n’est pas du JSON"_s));
        QVERIFY(refusalOf("{\"format\": 1").startsWith(u"ce n’est pas du JSON (octet "_s));
        QVERIFY(refusalOf("\x00\xFF\x00").startsWith(u"ce n’est pas du JSON"_s));
        QVERIFY(refusalOf(QByteArray(100000, '[')).startsWith(u"ce n’est pas du JSON"_s));
        QCOMPARE(refusalOf("[]"), u"un objet est attendu"_s);
        QCOMPARE(refusalOf("{}"), u"format : 1 est attendu"_s);
        QCOMPARE(refusalOf("{\"plan\": 1}"), u"clé inconnue « plan »"_s);
    }

    void aFaultIsReportedWithItsPlace_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QJsonValue>("value");
        QTest::addColumn<QString>("refusal");
        for (const Refusal& row : refusalsOfFiles() + refusalsOfContent()) {
            const QByteArray value = QJsonDocument(QJsonArray{row.value}).toJson(QJsonDocument::Compact);
            QTest::addRow("%s = %s", row.path, value.constData())
                << QString::fromLatin1(row.path) << row.value << row.sentence;
        }
    }
    void aFaultIsReportedWithItsPlace()
    {
        QFETCH(const QString, path);
        QFETCH(const QJsonValue, value);
        QTEST(refusalOf(mapWith(path, value)), "refusal");
    }

    void tagsAreCheckedOneByOne_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no digits") << u"nom"_s << u"« nom » n’est pas une étiquette"_s;
        QTest::newRow("half a byte") << u"8"_s << u"« 8 » n’est pas une étiquette"_s;
        QTest::newRow("half a tag") << u"5F"_s << u"« 5F » n’est pas une étiquette"_s;
        QTest::newRow("two tags") << u"8081"_s << u"« 8081 » n’est pas une étiquette"_s;
        QTest::newRow("none between slashes") << u"A1//80"_s << u"«  » n’est pas une étiquette"_s;
        QTest::newRow("a value inside another")
            << u"80/81"_s << u"l’étiquette qui précède « 81 » ne contient pas d’objets"_s;
        QTest::newRow("too deep") << QStringList(16, u"A1"_s).join(u'/') << u"trop d’étiquettes"_s;
        QTest::newRow("sound") << u"7F21/BF8120/5F37"_s << QString();
    }
    void tagsAreCheckedOneByOne()
    {
        QFETCH(const QString, tag);
        QFETCH(const QString, reason);
        const QString place = reason.isEmpty() ? QString() : u"beneficiaries[0].fields[0].tag : "_s;
        QCOMPARE(refusalOf(mapWith(u"beneficiaries/0/fields/0/tag"_s, tag)), place + reason);
    }

    void theFirstFaultIsReported()
    {
        QJsonObject map = smallMap();
        map.insert(u"name"_s, QString());
        map.insert(u"application"_s, QString());
        QCOMPARE(refusalOf(QJsonDocument(map).toJson()), u"name : un texte est attendu"_s);
    }
};

template class RunnableTests<tst_CardMap, QCoreApplication>;
#include "tst_cardmap.moc"
