#include "service/embedded/CardFileList.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/CardBytes.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QByteArray firstApplication = QByteArray::fromHex("F000000001");
const QByteArray secondApplication = QByteArray::fromHex("F000000002");
const CardFileId pointersId{firstApplication, 0x2001};

CardFile listed(const QString& name, const QByteArray& application, quint16 file, bool required = true)
{
    return {name, CardFileId{application, file}, {}, required, {}};
}

CardFile named(const QString& name, const QByteArray& pointer, bool required = true)
{
    return {name, {}, pointer, required, {}};
}

CardMap mapOf(const std::vector<CardFile>& files)
{
    CardMap map;
    map.files = files;
    map.identity = {*files.front().id};
    return map;
}

QByteArray entry(const char* number, const QByteArray& application)
{
    return tlv("82", QByteArray::fromHex(number) + QByteArray(2, '\0') + application);
}

QByteArray pointer(const QByteArray& name, const char* number, const char* file)
{
    return tlv("80", name + QByteArray::fromHex(number) + QByteArray::fromHex(file));
}

/// Two applications, a file in each.
QByteArray pointersFile()
{
    return tlv("E0", tlv("A0", entry("1001", firstApplication) + entry("1002", secondApplication)) +
                         pointer("BENEF   ", "1001", "2010") + pointer("DROITS  ", "1002", "2011"));
}

QString written(const std::vector<CardFileToRead>& files)
{
    QStringList texts;
    for (const CardFileToRead& file : files)
        texts.append(u"%1/%2%3"_s.arg(QLatin1StringView(file.id.application.toHex().last(1)))
                         .arg(file.id.file, 0, 16)
                         .arg(file.required ? u""_s : u"?"_s));
    return texts.join(u' ');
}

/// The other files in one line, or the fault.
QString otherFiles(const CardMap& map, const CardContent& content)
{
    const auto files = otherCardFiles(map, content);
    return files ? written(*files) : files.error().explanation;
}

QString pointed(const QByteArray& bytes)
{
    const auto files = parsePointersFile(bytes);
    if (!files)
        return files.error();
    QStringList texts;
    for (const PointedFile& file : *files)
        texts.append(u"%1=%2/%3"_s.arg(QString::fromLatin1(file.name))
                         .arg(QLatin1StringView(file.id.application.toHex().last(1)))
                         .arg(file.id.file, 0, 16));
    return texts.join(u' ');
}

} // namespace

class tst_CardFileList : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theIdentityIsReadFirst()
    {
        const CardMap map = mapOf({listed(u"a"_s, firstApplication, 1), listed(u"b"_s, firstApplication, 2)});
        QCOMPARE(written(firstCardFiles(map)), u"1/1"_s);
        QCOMPARE(otherFiles(map, {}), u"1/2"_s);
    }

    void theOnlyFileOfTheIdentityIsRequiredHoweverItIsListed()
    {
        QCOMPARE(written(firstCardFiles(mapOf({listed(u"a"_s, firstApplication, 1, false)}))), u"1/1"_s);
    }

    void oneOfSeveralIdentityFilesIsOptional()
    {
        CardMap map = mapOf({listed(u"a"_s, firstApplication, 1, false), listed(u"b"_s, firstApplication, 2)});
        map.identity.push_back(*map.files[1].id);
        QCOMPARE(written(firstCardFiles(map)), u"1/1? 1/2"_s);
    }

    void thePointersFileFollowsAndIsRequiredAndReadOnce()
    {
        CardMap map =
            mapOf({listed(u"a"_s, firstApplication, 1, false), listed(u"p"_s, firstApplication, 0x2001, false)});
        map.pointers = pointersId;
        QCOMPARE(written(firstCardFiles(map)), u"1/1 1/2001"_s);
        map.identity.push_back(pointersId);
        QCOMPARE(written(firstCardFiles(map)), u"1/1? 1/2001"_s);
        QCOMPARE(otherFiles(map, {{pointersId, pointersFile()}}), QString());
    }

    void filesOfAnApplicationAreReadTogether()
    {
        const CardMap map = mapOf({listed(u"a"_s, firstApplication, 1), listed(u"b"_s, firstApplication, 2),
                                   listed(u"c"_s, secondApplication, 1, false), listed(u"d"_s, firstApplication, 3)});
        QCOMPARE(otherFiles(map, {}), u"1/2 1/3 2/1?"_s);
    }

    void aFileIsFoundByItsNameInThePointersFile()
    {
        CardMap map = mapOf({listed(u"p"_s, firstApplication, 0x2001), named(u"droits"_s, "DROITS")});
        map.pointers = pointersId;
        QCOMPARE(otherFiles(map, {{pointersId, pointersFile()}}), u"2/2011"_s);
    }

    void anUnknownNameIsAnErrorOnlyForARequiredFile()
    {
        CardMap map = mapOf({listed(u"p"_s, firstApplication, 0x2001), named(u"photo"_s, "PHOTO", false)});
        map.pointers = pointersId;
        QCOMPARE(otherFiles(map, {{pointersId, pointersFile()}}), QString());
        map.files[1].required = true;
        QCOMPARE(otherFiles(map, {{pointersId, pointersFile()}}), u"la carte ne désigne pas le fichier « photo »"_s);
    }

    void allPointedFilesAreOptional()
    {
        CardMap map = mapOf({listed(u"p"_s, firstApplication, 0x2001), named(u"droits"_s, "DROITS")});
        map.pointers = pointersId;
        map.beneficiaries = {{{}, {0x65}, {}, {}, {}}};
        QCOMPARE(otherFiles(map, {{pointersId, pointersFile()}}), u"1/2010? 2/2011"_s);
    }

    void aMissingPointersFileIsDamage()
    {
        CardMap map = mapOf({listed(u"p"_s, firstApplication, 0x2001)});
        map.pointers = pointersId;
        QCOMPARE(otherFiles(map, {}), u"fichier des pointeurs : la carte le refuse"_s);
        QCOMPARE(otherFiles(map, {{pointersId, "\xE0\x01"}}), u"fichier des pointeurs : valeur tronquée"_s);
    }

    void aPointersFileNamesFilesAndTheirApplications()
    {
        QCOMPARE(pointed(pointersFile()), u"BENEF=1/2010 DROITS=2/2011"_s);
        QCOMPARE(pointed(QByteArray(2, '\0') + pointersFile() + QByteArray(9, '\xFF')),
                 u"BENEF=1/2010 DROITS=2/2011"_s);
        QCOMPARE(pointed(tlv("66", "") + pointersFile()), u"BENEF=1/2010 DROITS=2/2011"_s);
        QCOMPARE(pointed(tlv("E0", "")), QString());
    }

    void aDamagedPointersFileIsRefused()
    {
        const QByteArray applications = tlv("A0", entry("1001", firstApplication));
        QCOMPARE(pointed(""), u"répertoire absent"_s);
        QCOMPARE(pointed(QByteArray(64, '\xFF')), u"répertoire absent"_s);
        QCOMPARE(pointed(tlv("65", "")), u"répertoire absent"_s);
        QCOMPARE(pointed(tlv("E0", applications + pointer("BENEF", "1001", "2010"))), u"fichier mal désigné"_s);
        QCOMPARE(pointed(tlv("E0", applications + pointer("BENEF    ", "1001", "2010"))), u"fichier mal désigné"_s);
        QCOMPARE(pointed(tlv("E0", applications + tlv("80", ""))), u"fichier mal désigné"_s);
        QCOMPARE(pointed(tlv("E0", applications + pointer("BENEF   ", "1002", "2010"))),
                 u"fichier d’une application sans nom"_s);
        QCOMPARE(pointed(tlv("E0", tlv("A0", entry("1001", "")))), u"application mal nommée"_s);
        QCOMPARE(pointed(tlv("E0", tlv("A0", tlv("82", "x")))), u"application mal nommée"_s);
        QCOMPARE(pointed(tlv("E0", tlv("A0", entry("1001", QByteArray(17, 'A'))))), u"application mal nommée"_s);
        const QByteArray whole = pointersFile();
        for (qsizetype size = 1; size < whole.size(); ++size)
            QVERIFY(!parsePointersFile(whole.first(size)));
    }
};

template class RunnableTests<tst_CardFileList, QCoreApplication>;
#include "tst_cardfilelist.moc"
