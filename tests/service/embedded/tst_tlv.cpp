#include "service/embedded/Tlv.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/CardBytes.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString written(const std::vector<TlvObject>& objects)
{
    QStringList texts;
    for (const TlvObject& object : objects) {
        QString text = QString::number(object.tag, 16).toUpper();
        if (isConstructedTag(object.tag))
            text += u'{' + written(object.children) + u'}';
        else
            text += u':' + QString::fromLatin1(object.value.toByteArray().toHex());
        texts.append(text);
    }
    return texts.join(u' ');
}

/// The objects in one line, or the fault.
QString parsed(const QByteArray& bytes)
{
    const auto objects = parseTlv(bytes);
    return objects ? written(*objects) : describeTlvFault(objects.error());
}

QString parsedDigits(const char* digits)
{
    return parsed(QByteArray::fromHex(digits));
}

QByteArray nested(int depth)
{
    QByteArray bytes = tlv("80", "x");
    for (int level = 1; level < depth; ++level)
        bytes = tlv("65", bytes);
    return bytes;
}

QString valuesAt(const QByteArray& bytes, const std::vector<quint32>& path)
{
    const auto objects = parseTlv(bytes);
    QStringList values;
    for (const TlvObject* object : objects ? findTlv(*objects, path) : std::vector<const TlvObject*>())
        values.append(QString::fromLatin1(object->value));
    return values.join(u',');
}

} // namespace

class tst_Tlv : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void objectsAndNestedObjectsAreFound()
    {
        QCOMPARE(parsedDigits("80 01 41"), u"80:41"_s);
        QCOMPARE(parsedDigits("65 07 80 01 41 81 02 4243 93 00"), u"65{80:41 81:4243} 93:"_s);
        QCOMPARE(parsedDigits("7F21 05 5F37 02 4142"), u"7F21{5F37:4142}"_s);
        QCOMPARE(parsedDigits("DF8101 01 41"), u"DF8101:41"_s);
    }

    void longTagsWithSmallNumbersAreAccepted()
    {
        QCOMPARE(parsedDigits("9F02 01 41 DF01 01 42"), u"9F02:41 DF01:42"_s);
    }

    void noBytesGiveNoObjects()
    {
        QCOMPARE(parsedDigits(""), QString());
        QCOMPARE(parsedDigits("65 00"), u"65{}"_s);
    }

    void everyFormOfALengthIsAccepted()
    {
        QCOMPARE(parsedDigits("80 81 01 41"), u"80:41"_s);
        QCOMPARE(parsedDigits("80 82 0001 41"), u"80:41"_s);
        QCOMPARE(parsedDigits("80 83 000001 41"), u"80:41"_s);
        QCOMPARE(parsedDigits("80 84 00000001 41"), u"80:41"_s);
        for (const qsizetype size : {127, 128, 255, 256, 32767})
            QCOMPARE(parsed(tlv("80", QByteArray(size, 'A'))).size(), 3 + 2 * size);
    }

    void erasedMemoryIsSkipped()
    {
        QCOMPARE(parsedDigits("0000 80 01 41 00 81 01 42 000000"), u"80:41 81:42"_s);
        QCOMPARE(parsedDigits("65 08 00 80 01 41 0000 8100"), u"65{80:41 81:}"_s);
        QCOMPARE(parsedDigits("80 01 41 FFFFFFFF"), u"80:41"_s);
        QCOMPARE(parsedDigits("80 01 41 00FF00FF"), u"80:41"_s);
        QCOMPARE(parsedDigits("FFFFFFFF"), QString());
    }

    void fillerInsideAnObjectIsNotSkipped()
    {
        QCOMPARE(parsedDigits("65 05 80 01 41 FFFF"), u"étiquette tronquée"_s);
        QCOMPARE(parsedDigits("80 01 41 FFFFFF 81 01 42"), u"étiquette trop longue"_s);
    }

    void eachKindOfDamageIsReported_data()
    {
        QTest::addColumn<QByteArray>("digits");
        QTest::addColumn<QString>("fault");
        QTest::newRow("a tag alone") << QByteArray("80") << u"longueur tronquée"_s;
        QTest::newRow("half a tag") << QByteArray("5F") << u"étiquette tronquée"_s;
        QTest::newRow("two thirds of a tag") << QByteArray("5F81") << u"étiquette tronquée"_s;
        QTest::newRow("a tag of four bytes") << QByteArray("5F81810100") << u"étiquette trop longue"_s;
        QTest::newRow("a tag's number with zeros in front") << QByteArray("5F800100") << u"étiquette trop longue"_s;
        QTest::newRow("half a length") << QByteArray("808201") << u"longueur tronquée"_s;
        QTest::newRow("a length without its bytes") << QByteArray("8084") << u"longueur tronquée"_s;
        QTest::newRow("no length") << QByteArray("80804100 00") << u"longueur indéfinie"_s;
        QTest::newRow("no length of objects") << QByteArray("65808001410000") << u"longueur indéfinie"_s;
        QTest::newRow("a length of five bytes") << QByteArray("8085000000000141") << u"longueur trop longue"_s;
        QTest::newRow("the longest length") << QByteArray("80FF") << u"longueur trop longue"_s;
        QTest::newRow("a value cut short") << QByteArray("80024") + "1" << u"valeur tronquée"_s;
        QTest::newRow("a value without end") << QByteArray("8084FFFFFFFF41") << u"valeur tronquée"_s;
        QTest::newRow("an object over its holder's end") << QByteArray("6503800241") + "42" << u"valeur tronquée"_s;
        QTest::newRow("text where objects belong") << QByteArray("650453504543") << u"valeur tronquée"_s;
    }
    void eachKindOfDamageIsReported()
    {
        QFETCH(const QByteArray, digits);
        QTEST(parsedDigits(digits.constData()), "fault");
    }

    void aFileCutAtAnyByteIsDamagedOrShorter()
    {
        const QByteArray whole = tlv("65", tlv("80", "SPECIMEN") + tlv("A2", tlv("5F20", QByteArray(200, 'A'))));
        for (qsizetype size = 1; size < whole.size(); ++size)
            QVERIFY2(!parseTlv(whole.first(size)), qPrintable(QString::number(size)));
        QVERIFY(parseTlv(whole));
    }

    void theDepthOfNestingIsBounded()
    {
        QVERIFY(parseTlv(nested(deepestTlv)));
        QCOMPARE(parsed(nested(deepestTlv + 1)), u"objets trop imbriqués"_s);
        QByteArray bottomless;
        for (int level = 0; level < 5000; ++level)
            bottomless += QByteArray::fromHex("65847FFFFFFF");
        QCOMPARE(parsed(bottomless), u"valeur tronquée"_s);
        QByteArray hollow;
        for (int level = 0; level < 2000; ++level)
            hollow = tlv("65", hollow);
        QCOMPARE(parsed(hollow), u"objets trop imbriqués"_s);
    }

    void aPathFindsEachObjectAtItsEndInOrder()
    {
        const QByteArray bytes = tlv("65", tlv("80", "a") + tlv("81", "x") + tlv("80", "b")) +
                                 tlv("66", tlv("80", "y")) + tlv("65", tlv("80", "c"));
        QCOMPARE(valuesAt(bytes, {0x65, 0x80}), u"a,b,c"_s);
        QCOMPARE(valuesAt(bytes, {0x66, 0x80}), u"y"_s);
        QCOMPARE(valuesAt(bytes, {0x80}), QString());
        QCOMPARE(valuesAt(bytes, {0x65, 0x80, 0x80}), QString());
        QCOMPARE(valuesAt(bytes, {}), QString());
    }

    void aTagIsExactlyItsBytes()
    {
        QCOMPARE(tlvTag(QByteArray::fromHex("65")), std::optional<quint32>(0x65));
        QCOMPARE(tlvTag(QByteArray::fromHex("5F37")), std::optional<quint32>(0x5F37));
        QCOMPARE(tlvTag(QByteArray::fromHex("DF8101")), std::optional<quint32>(0xDF8101));
        for (const char* digits : {"", "00", "6566", "5F", "5F3700", "5F808001", "DF810101"})
            QCOMPARE(tlvTag(QByteArray::fromHex(digits)), std::nullopt);
        QCOMPARE(leadingTlvTag(QByteArray::fromHex("5F37FF")), std::optional<quint32>(0x5F37));
        for (const char* digits : {"", "00", "0065", "5F"})
            QCOMPARE(leadingTlvTag(QByteArray::fromHex(digits)), std::nullopt);
    }

    void theFirstByteOfATagTellsWhetherItIsConstructed()
    {
        for (const quint32 tag : {0x65U, 0xA0U, 0xE0U, 0x7F21U, 0x7F67U, 0xBF8120U})
            QVERIFY(isConstructedTag(tag));
        for (const quint32 tag : {0x80U, 0x5AU, 0x5F37U, 0x5F20U, 0xDF8120U})
            QVERIFY(!isConstructedTag(tag));
    }
};

template class RunnableTests<tst_Tlv, QCoreApplication>;
#include "tst_tlv.moc"
