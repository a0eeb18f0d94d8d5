#include "card/CardParser.h"
#include "service/embedded/CardDocument.h"
#include "service/embedded/CardFileList.h"
#include "service/embedded/SiteMaps.h"
#include "service/embedded/Tlv.h"
#include "tests/card/CardXml.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/CardBytes.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The files that the virtual card's encoder makes, independently of the map.
CardContent encoded(const QString& layout, const QByteArray& xml = {})
{
    const QTemporaryDir folder;
    QProcess encoder;
    encoder.start(u"/usr/bin/python3"_s,
                  {u"-B"_s, QStringLiteral(PELMORA_SOURCE "/tests/fakes/cardlayout.py"), layout, folder.path()});
    encoder.write(xml);
    encoder.closeWriteChannel();
    CardContent content;
    if (!encoder.waitForFinished() || encoder.exitCode() != 0) {
        qWarning("%s", encoder.readAllStandardError().constData());
        return content;
    }
    for (const QString& application : QDir(folder.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QDir files(folder.filePath(application));
        for (const QString& file : files.entryList(QDir::Files))
            content.emplace(CardFileId{QByteArray::fromHex(application.toLatin1()), file.toUShort(nullptr, 16)},
                            contentOf(files.filePath(file)));
    }
    return content;
}

CardMap shippedMap(const QByteArray& file)
{
    return parseCardMap(contentOf(QStringLiteral(PELMORA_STAGE_SHARE "/maps/") + QString::fromLatin1(file))).value();
}

/// The files that the library reads: those of the map.
CardContent readAlong(const CardMap& map, const CardContent& card)
{
    CardContent content;
    const auto read = [&card, &content](const std::vector<CardFileToRead>& files) {
        for (const CardFileToRead& file : files) {
            if (const auto found = card.find(file.id); found != card.end())
                content.insert(*found);
        }
    };
    read(firstCardFiles(map));
    if (const auto others = otherCardFiles(map, content))
        read(*others);
    return content;
}

std::expected<CardRecord, Error> recordOf(const QString& xml)
{
    const auto document = XmlDocument::fromText(xml);
    return parseCardDocument(document ? &*document : nullptr);
}

/// The record of a card of the specimen layout that was made of this XML.
std::expected<CardRecord, QString> recordThroughCard(const QByteArray& xml)
{
    const CardMap map = shippedMap("specimen.json");
    const auto document = cardDocument(map, readAlong(map, encoded(u"specimen"_s, xml)));
    if (!document)
        return std::unexpected(document.error().explanation);
    const auto record = recordOf(*document);
    if (!record)
        return std::unexpected(record.error().localizedDescription());
    return *record;
}

QString scarceBeneficiary(const QString& name, const QString& quality)
{
    return CardXml::beneficiary(
        u"<ident><nomUsuel>%1</nomUsuel><prenomUsuel>Anaïs</prenomUsuel><naissance><dateEnCarte>851231</dateEnCarte>"
        "</naissance><rangDeNaissance>2</rangDeNaissance><nir>269062B12345634</nir></ident><amo><qualBenef>%2</"
        "qualBenef>"
        "<codeRegime>02</codeRegime><caisse>005</caisse><centreCarte>0042</centreCarte><codeGestion>A1</codeGestion>"
        "</amo>"_s.arg(name, quality));
}

/// As many persons as a family card has, the insured one last.
QString largeFamily()
{
    QString beneficiaries;
    for (int number = 1; number < 19; ++number)
        beneficiaries += scarceBeneficiary(QString(number, u'É'), u"6"_s);
    return CardXml::card(beneficiaries + scarceBeneficiary(u"SPECIMEN"_s, u"0"_s));
}

} // namespace

class tst_SpecimenLayout : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theSpecimensFilesGiveItsRecord()
    {
        const QByteArray xml = contentOf(QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml"));
        const auto direct = recordOf(QString::fromUtf8(xml));
        QVERIFY(direct);
        QCOMPARE(direct->beneficiaries().size(), 3);
        const auto record = recordThroughCard(xml);
        QVERIFY2(record, qPrintable(record ? QString() : record.error()));
        QVERIFY(*record == *direct);
    }

    void otherCardsFilesGiveTheirRecord_data()
    {
        QTest::addColumn<QString>("xml");
        QTest::newRow("without serial number, periods and certified numbers")
            << CardXml::card(scarceBeneficiary(u"SPECIMEN"_s, u"0"_s));
        QTest::newRow("a serial number of an odd count")
            << CardXml::card(scarceBeneficiary(u"SPECIMEN"_s, u"0"_s), u"<numSerie>00123</numSerie>"_s);
        QTest::newRow("a large family") << largeFamily();
    }
    void otherCardsFilesGiveTheirRecord()
    {
        QFETCH(const QString, xml);
        const auto direct = recordOf(xml);
        QVERIFY(direct);
        const auto record = recordThroughCard(xml.toUtf8());
        QVERIFY2(record, qPrintable(record ? QString() : record.error()));
        QVERIFY(*record == *direct);
    }

    void theRightsMayBeRefused()
    {
        const CardMap map = shippedMap("specimen.json");
        CardContent card = encoded(u"specimen"_s, contentOf(QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml")));
        QCOMPARE(std::erase_if(
                     card, [](const auto& file) { return file.first.application.back() == 2 && file.first.file == 2; }),
                 1U);
        const auto document = cardDocument(map, readAlong(map, card));
        QVERIFY(document);
        const auto record = recordOf(*document);
        QVERIFY(record);
        QVERIFY(!record->beneficiaries().first().rights());
    }

    void everyDamagedByteOfACardIsAnErrorOrACard()
    {
        const CardMap map = shippedMap("specimen.json");
        const CardContent sound =
            readAlong(map, encoded(u"specimen"_s, contentOf(QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml"))));
        int refused = 0;
        for (const auto& [id, bytes] : sound) {
            for (qsizetype place = 0; place < bytes.size(); ++place) {
                CardContent damaged = sound;
                damaged[id][place] = static_cast<char>(damaged[id][place] ^ 0x20);
                const auto document = cardDocument(map, damaged);
                if (!document)
                    ++refused;
                else
                    QVERIFY(XmlDocument::fromText(*document));
            }
        }
        QVERIFY(refused > 100);
    }

    void aSecondGenerationCardIsUnderstoodAsFarAsIsPublicAndRefused()
    {
        const CardMap map = shippedMap("vitale2.json");
        const CardContent content = readAlong(map, encoded(u"second-generation"_s));
        QCOMPARE(content.size(), 5U);
        const auto document = cardDocument(map, content);
        QVERIFY(!document);
        QCOMPARE(document.error().explanation,
                 u"il manque à l’assuré : ident/rangDeNaissance, amo/qualBenef, amo/codeRegime, amo/caisse, "
                 "amo/centreCarte, amo/codeGestion ; au bénéficiaire 2 : ident/rangDeNaissance"_s);
        QVERIFY(document.error().kind == CardGap::Kind::Missing);
    }

    void aFilePointedToTwiceIsReadOnce()
    {
        const CardMap map = shippedMap("vitale2.json");
        CardContent content = readAlong(map, encoded(u"second-generation"_s));
        const QString once = cardDocument(map, content).error().explanation;
        const QByteArray pointers = content[*map.pointers];
        const auto directory = parseTlv(pointers);
        QByteArray all;
        for (const TlvObject& object : directory->front().children) {
            const QByteArray bytes = object.value.toByteArray();
            all += object.tag == 0x80 ? tlv("80", bytes) + tlv("80", "AUTRE   " + bytes.sliced(8)) : tlv("A0", bytes);
        }
        content[*map.pointers] = tlv("E0", all);
        QCOMPARE(cardDocument(map, content).error().explanation, once);
    }

    void aDamagedRecordInAPointedFileIsReported()
    {
        const CardMap map = shippedMap("vitale2.json");
        CardContent content = readAlong(map, encoded(u"second-generation"_s));
        content[{map.application, 0x2011}].chop(1);
        const auto document = cardDocument(map, content);
        QVERIFY(!document);
        QVERIFY(document.error().kind == CardGap::Kind::Damaged);
        QCOMPARE(document.error().explanation, u"fichier 2011 : valeur tronquée"_s);
        // A file of another form is ignored.
        content[{map.application, 0x2011}] = QByteArray::fromHex("3082FFFF");
        QVERIFY(cardDocument(map, content).error().kind == CardGap::Kind::Missing);
    }
};

template class RunnableTests<tst_SpecimenLayout, QCoreApplication>;
#include "tst_specimenlayout.moc"
