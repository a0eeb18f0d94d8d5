#include "card/PelmoraError.h"
#include "card/client/ServiceReply.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QtTest>

using namespace Qt::StringLiterals;

class tst_ServiceReply : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aCardsBytesAreReadInTheFirstEncodingThatFits_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QByteArray("") << u""_s;
        QTest::newRow("ASCII") << QByteArray("SPECIMEN") << u"SPECIMEN"_s;
        QTest::newRow("UTF-8") << QByteArray::fromHex("c389c593") << u"Éœ"_s;
        QTest::newRow("UTF-8 beyond the first plane") << QByteArray::fromHex("f09f8287") << u"\U0001F087"_s;
        QTest::newRow("ISO Latin 1") << QByteArray::fromHex("c9") << u"É"_s;
        QTest::newRow("ISO Latin 1, first and last") << QByteArray::fromHex("a0ff") << u"\u00a0ÿ"_s;
        QTest::newRow("UTF-8 that is cut is ISO Latin 1") << QByteArray::fromHex("53c3") << u"SÃ"_s;
        QTest::newRow("code page 1252") << QByteArray::fromHex("c99c80") << u"Éœ€"_s;
        QTest::newRow("code page 1252, its own characters") << QByteArray::fromHex("808283848586878889"
                                                                                   "8a8b8c8e91929394959697"
                                                                                   "98999a9b9c9e9f")
                                                            << u"€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ"_s;
    }

    void aCardsBytesAreReadInTheFirstEncodingThatFits()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const QString, text);
        QCOMPARE(decodeCardText(bytes), text);
    }

    void bytesThatFitNoEncodingGiveNoText_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        for (const char* const hex : {"81", "8d", "8f", "90", "9d", "c9419d"})
            QTest::newRow(hex) << QByteArray::fromHex(hex);
    }

    void bytesThatFitNoEncodingGiveNoText()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(decodeCardText(bytes), std::nullopt);
    }

    void aTextInAReplyCanBeATextOrBytesInUtf8_data()
    {
        QTest::addColumn<QCborValue>("value");
        QTest::addColumn<bool>("isText");
        QTest::newRow("text") << QCborValue(u"é"_s) << true;
        QTest::newRow("bytes") << QCborValue(QByteArray::fromHex("c3a9")) << true;
        QTest::newRow("other bytes") << QCborValue(QByteArray::fromHex("e9")) << false;
        QTest::newRow("number") << QCborValue(7) << false;
        QTest::newRow("true") << QCborValue(true) << false;
        QTest::newRow("null") << QCborValue(QCborValue::Null) << false;
        QTest::newRow("absent") << QCborValue() << false;
    }

    void aTextInAReplyCanBeATextOrBytesInUtf8()
    {
        QFETCH(const QCborValue, value);
        QFETCH(const bool, isText);
        QCborMap reply{{u"Other"_s, u"x"_s}};
        if (!value.isUndefined())
            reply.insert(u"Key"_s, value);
        QCOMPARE(replyText(reply, "Key"_L1), isText ? std::optional(u"é"_s) : std::nullopt);
    }

    void aDetailIsMadeAShortLineOfPlainText()
    {
        QCOMPARE(replyDetail({}), QString());
        QCOMPARE(replyDetail({{u"Detail"_s, 7}}), QString());
        QCOMPARE(replyDetail({{u"Detail"_s, u"Un autre programme."_s}}), u"Un autre programme."_s);
        QCOMPARE(replyDetail({{u"Detail"_s, u"a\n\x1B[31mb"_s}}), u"a??[31mb"_s);
        QCOMPARE(replyDetail({{u"Detail"_s, QString(1000, u'x')}}), QString(300, u'x'));
    }

    void onlyTheExactSuccessWordIsASuccess_data()
    {
        QTest::addColumn<QCborMap>("reply");
        QTest::addColumn<bool>("success");
        QTest::newRow("success") << QCborMap{{u"Status"_s, u"success"_s}} << true;
        QTest::newRow("Success") << QCborMap{{u"Status"_s, u"Success"_s}} << false;
        QTest::newRow("with a blank") << QCborMap{{u"Status"_s, u"success "_s}} << false;
        QTest::newRow("error") << QCborMap{{u"Status"_s, u"error"_s}} << false;
        QTest::newRow("a number") << QCborMap{{u"Status"_s, 1}} << false;
        QTest::newRow("another key") << QCborMap{{u"status"_s, u"success"_s}} << false;
        QTest::newRow("nothing") << QCborMap() << false;
    }

    void onlyTheExactSuccessWordIsASuccess()
    {
        QFETCH(const QCborMap, reply);
        QFETCH(const bool, success);
        const std::expected<void, Error> status = statusOf(reply);
        QCOMPARE(status.has_value(), success);
        QVERIFY(success || status.error() == PelmoraError::generalError());
    }
};

template class RunnableTests<tst_ServiceReply, QCoreApplication>;
#include "tst_servicereply.moc"
