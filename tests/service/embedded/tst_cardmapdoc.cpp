#include "service/embedded/CardDocument.h"
#include "service/embedded/CardElements.h"
#include "service/embedded/CardFileList.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/CardBytes.h"
#include "tests/service/embedded/MapJson.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <set>

using namespace Qt::StringLiterals;

namespace {

QString documentation()
{
    QFile file(QStringLiteral(PELMORA_SOURCE "/docs/card-data.md"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : file.errorString();
}

/// The text between two others; empty without them.
QString between(const QString& text, const QString& before, const QString& after)
{
    const qsizetype start = text.indexOf(before);
    const qsizetype end = start < 0 ? -1 : text.indexOf(after, start + before.size());
    return end < 0 ? QString() : text.sliced(start + before.size(), end - start - before.size());
}

/// The names in the first column of the table with this head.
QStringList firstColumn(const QString& head)
{
    static const QRegularExpression name(u"^\\| `([^`]+)`"_s);
    QStringList names;
    for (const QString& line : between(documentation(), head, u"\n\n"_s).split(u'\n')) {
        if (const QRegularExpressionMatch match = name.match(line); match.hasMatch())
            names.append(match.captured(1));
    }
    return names;
}

/// The documentation's table of the elements that a card must have.
QString renderedNeeds()
{
    QString table;
    for (const CardElement& element : CardElements::beneficiaryElements) {
        if (element.need != CardNeed::Optional)
            table += u"| `%1` | %2 |\n"_s.arg(
                element.path, element.need == CardNeed::Everyone ? u"everyone"_s : u"the insured person"_s);
    }
    return table +
           u"| `%1` or `%2` | the insured person |"_s.arg(CardElements::birthDate, CardElements::shortBirthDate);
}

std::expected<CardMap, QString> exampleMap()
{
    return parseCardMap(between(documentation(), u"```json\n"_s, u"```"_s).toUtf8());
}

/// A card of one person for the example.
CardContent exampleCard(const CardMap& map)
{
    const QByteArray first = QByteArray::fromHex("F000000001");
    const QByteArray second = QByteArray::fromHex("F000000002");
    const QByteArray entry = QByteArray::fromHex("1001");
    const QByteArray pointers = tlv("E0", tlv("A0", tlv("82", entry + QByteArray(2, '\0') + first)) +
                                              tlv("80", "BENEF   " + entry + QByteArray::fromHex("2010")));
    const QByteArray person =
        tlv("65", tlv("80", " ") + tlv("84", "SPECIMEN") + tlv("81", "ZO\xC9") + tlv("82", "19850514") +
                      tlv("85", "1") + tlv("93", "2850575116123") + tlv("86", "0"));
    const QByteArray coverage = tlv("67", tlv("80", "01") + tlv("81", "751") + tlv("82", "8801") + tlv("83", "10"));
    return {{map.identity.front(), tlv("66", tlv("5A", QByteArray::fromHex("00123F")))},
            {*map.pointers, pointers},
            {{first, 0x2010}, person},
            {{second, 0x0001}, coverage}};
}

} // namespace

class tst_CardMapDoc : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theExampleIsAMap()
    {
        const auto map = exampleMap();
        QVERIFY2(map, qPrintable(map ? QString() : map.error()));
        QVERIFY(firstCardFiles(*map).size() == 2);
    }

    void aCardIsReadWithTheExample()
    {
        const auto map = exampleMap();
        QVERIFY(map);
        const CardContent card = exampleCard(*map);
        const auto others = otherCardFiles(*map, card);
        QVERIFY2(others, qPrintable(others ? QString() : others.error().explanation));
        QCOMPARE(others->size(), 2U);
        const auto document = cardDocument(*map, card);
        QVERIFY2(document, qPrintable(document ? QString() : document.error().explanation));
        for (const QString& element :
             {u"<numSerie>00123</numSerie>"_s, u"<nomUsuel>SPECIMEN</nomUsuel>"_s, u"<prenomUsuel>ZOÉ</prenomUsuel>"_s,
              u"<date>14051985</date>"_s, u"<nir>285057511612381</nir>"_s, u"<caisse>751</caisse>"_s})
            QVERIFY2(document->contains(element), qPrintable(element));
    }

    void theDocumentedFormsAreTheKnownOnes()
    {
        const QStringList forms = firstColumn(u"| form |"_s);
        QCOMPARE(forms.size(), static_cast<qsizetype>(CardForm::Hexadecimal) + 1);
        std::set<CardForm> found;
        for (const QString& form : forms) {
            const auto map = parseCardMap(mapWith(u"beneficiaries/0/fields/0/form"_s, form));
            QVERIFY2(map, qPrintable(form));
            found.insert(map->beneficiaries.front().fields.front().form);
        }
        QCOMPARE(static_cast<qsizetype>(found.size()), forms.size());
    }

    void theDocumentedNeededFieldsAreThoseOfTheTable()
    {
        const QString documented = between(documentation(), u"| element | of whom |\n|---|---|\n"_s, u"\n\n"_s);
        QVERIFY2(documented == renderedNeeds(), qPrintable(u"docs/card-data.md should hold:\n"_s + renderedNeeds()));
    }

    void theDocumentedKeysAreTheKnownOnes()
    {
        QStringList keys;
        for (const QString& row : firstColumn(u"| key | what it says |"_s))
            keys.append(row);
        // "version" is the second name in its row.
        keys.append(u"version"_s);
        for (const QString& key : keys) {
            const auto map = parseCardMap(mapWith(key, QJsonValue(0)));
            QVERIFY2(map || !map.error().contains(u"clé inconnue"_s), qPrintable(key));
        }
        for (const QString& key : smallMap().keys())
            QVERIFY2(documentation().contains(u"`%1`"_s.arg(key)), qPrintable(key));
    }
};

template class RunnableTests<tst_CardMapDoc, QCoreApplication>;
#include "tst_cardmapdoc.moc"
