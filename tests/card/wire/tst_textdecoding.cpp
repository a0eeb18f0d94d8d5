#include "card/wire/TextDecoding.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_TextDecoding : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void utf8IsDecodedWithoutItsByteOrderMark_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty") << QByteArray() << QString();
        QTest::newRow("one to four bytes") << QByteArray("e\xC3\xA9\xE2\x82\xAC\xF0\x9F\x99\x82") << u"eé€\U0001F642"_s;
        QTest::newRow("mark") << QByteArray("\xEF\xBB\xBFZo\xC3\xA9") << u"Zoé"_s;
        QTest::newRow("mark alone") << QByteArray("\xEF\xBB\xBF") << QString();
        QTest::newRow("zero byte") << QByteArray("a\0b", 3) << QString(u"a\0b"_s);
        QTest::newRow("ends in a whole character") << QByteArray("Zo\xC3\xA9") << u"Zoé"_s;
    }

    void utf8IsDecodedWithoutItsByteOrderMark()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const QString, expected);
        QCOMPARE(decodeUtf8(bytes), std::optional(expected));
    }

    void bytesThatAreNotUtf8AreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("Latin 1") << QByteArray("Zo\xE9 ");
        QTest::newRow("cut after one of two bytes") << QByteArray("Zo\xC3");
        QTest::newRow("cut after two of three bytes") << QByteArray("\xE2\x82");
        QTest::newRow("cut after three of four bytes") << QByteArray("long enough for a fast path \xF0\x9F\x99");
        QTest::newRow("one byte of a mark") << QByteArray("\xEF");
        QTest::newRow("two bytes of a mark") << QByteArray("\xEF\xBB");
        QTest::newRow("continuation alone") << QByteArray("a\x80z");
        QTest::newRow("overlong") << QByteArray("\xC0\xAF");
        QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80");
        QTest::newRow("beyond the last character") << QByteArray("\xF4\x90\x80\x80");
    }

    void bytesThatAreNotUtf8AreRefused()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(decodeUtf8(bytes), std::nullopt);
    }

    void everyByteOfLatin1IsItsCharacterOrRefused()
    {
        for (int byte = 0; byte < 256; ++byte) {
            const QByteArray bytes(1, static_cast<char>(byte));
            const bool isControl = byte >= 0x80 && byte <= 0x9F;
            QCOMPARE(decodeLatin1(bytes), isControl ? std::nullopt : std::optional(QString(QChar(byte))));
        }
    }

    void windows1252DiffersFromLatin1In27CharactersAndHasFiveUnassigned()
    {
        QString others;
        QByteArray absent;
        for (int byte = 0; byte < 256; ++byte) {
            const QByteArray bytes(1, static_cast<char>(byte));
            const std::optional<QString> text = decodeWindows1252(bytes);
            if (!text)
                absent += bytes;
            else if (*text != QChar(byte))
                others += *text;
        }
        QCOMPARE(others, u"€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ"_s);
        QCOMPARE(absent, QByteArray("\x81\x8D\x8F\x90\x9D"));
    }

    void anEncodedTextIsDecodedUnchanged()
    {
        const QString inBoth = u"Zoé Œdipe, 3 € « à » – ™\n"_s;
        QCOMPARE(encodeWindows1252(inBoth),
                 std::optional(QByteArray("Zo\xE9 \x8C\x64ipe, 3 \x80 \xAB \xE0 \xBB \x96 \x99\n")));
        for (int byte = 0; byte < 256; ++byte) {
            const QByteArray bytes(1, static_cast<char>(byte));
            if (const std::optional<QString> text = decodeWindows1252(bytes))
                QCOMPARE(encodeWindows1252(*text), std::optional(bytes));
        }
        const QString everywhere = inBoth + u"Łódź \U0001F642"_s;
        QCOMPARE(encodeUtf8(everywhere), std::optional(everywhere.toUtf8()));
        QCOMPARE(encodeUtf8(QString()).value_or("x"), QByteArray());
    }

    void charactersOutsideAnEncodingAreNotEncoded()
    {
        QCOMPARE(encodeWindows1252(u"Łódź"), std::nullopt);
        QCOMPARE(encodeWindows1252(u"\U0001F642"), std::nullopt);
        QCOMPARE(encodeWindows1252(QString(QChar(0x81))), std::nullopt);
        const QString half(QChar(0xD83D));
        QCOMPARE(encodeUtf8(half), std::nullopt);
        QCOMPARE(encodeUtf8(u'a' + half + u'b'), std::nullopt);
        QCOMPARE(encodeWindows1252(half), std::nullopt);
    }

    void textsOfTheEncodingAreDecodedAndOthersRefused()
    {
        QCOMPARE(decodeLatin1("Zo\xE9"), std::optional(u"Zoé"_s));
        QCOMPARE(decodeLatin1("Zo\xE9 \x8C"), std::nullopt);
        QCOMPARE(decodeWindows1252("Zo\xE9 \x8C\x64ipe"), std::optional(u"Zoé Œdipe"_s));
        QCOMPARE(decodeWindows1252("Zo\xE9 \x81"), std::nullopt);
    }
};

template class RunnableTests<tst_TextDecoding, QCoreApplication>;
#include "tst_textdecoding.moc"
