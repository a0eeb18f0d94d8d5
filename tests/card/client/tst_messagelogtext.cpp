#include "card/client/MessageLogText.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCborArray>
#include <QCoreApplication>
#include <QtTest>

using namespace Qt::StringLiterals;

class tst_MessageLogText : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void keysAndShortValuesAreWritten_data()
    {
        QTest::addColumn<QCborMap>("body");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QCborMap() << u"{}"_s;
        QTest::newRow("texts") << QCborMap{{u"Command"_s, u"init"_s}, {u"Mode"_s, u"0"_s}}
                               << uR"({"Command": "init", "Mode": "0"})"_s;
        QTest::newRow("an integer") << QCborMap{{u"Result"_s, -17}} << uR"({"Result": -17})"_s;
        QTest::newRow("an array") << QCborMap{{u"Readers"_s, QCborArray{u"A"_s, u"B"_s, 7, QCborArray{1}}}}
                                  << uR"({"Readers": ["A", "B", 7, array of 1]})"_s;
        QTest::newRow("a text of 64") << QCborMap{{u"k"_s, QString(64, u'x')}}
                                      << u"{\"k\": \""_s + QString(64, u'x') + u"\"}"_s;
        QTest::newRow("a text of 65") << QCborMap{{u"k"_s, QString(65, u'x')}} << uR"({"k": text of 65 characters})"_s;
        QTest::newRow("bytes") << QCborMap{{u"k"_s, QByteArray("DUPONT")}} << uR"({"k": 6 bytes})"_s;
        QTest::newRow("a map") << QCborMap{{u"k"_s, QCborMap{{u"Name"_s, u"X"_s}}}} << uR"({"k": map of 1})"_s;
        QTest::newRow("a card") << QCborMap{{u"Vitale"_s, u"<x/>"_s}} << uR"({"Vitale": text of 4 characters})"_s;
        QTest::newRow("informations") << QCborMap{{u"Informations"_s, u"<x/>"_s}}
                                      << uR"({"Informations": text of 4 characters})"_s;
        QTest::newRow("a fund") << QCborMap{{u"FundCodeLibelle"_s, u"CPAM"_s}}
                                << uR"({"FundCodeLibelle": text of 4 characters})"_s;
        QTest::newRow("a card in an array")
            << QCborMap{{u"Vitale"_s, QCborArray{u"SPECIMEN"_s}}} << uR"({"Vitale": array of 1})"_s;
        QTest::newRow("a card that is a number") << QCborMap{{u"Vitale"_s, 1800175}} << uR"({"Vitale": other value})"_s;
        QTest::newRow("other types") << QCborMap{{1, true}, {u"k"_s, 1.5}}
                                     << uR"({1: other value, "k": other value})"_s;
    }

    void keysAndShortValuesAreWritten()
    {
        QFETCH(const QCborMap, body);
        QFETCH(const QString, text);
        QCOMPARE(messageLogText(body), text);
    }

    void theLogTextOfAnyMessageIsShort()
    {
        QCborArray array;
        for (int index = 0; index < 10'000; ++index)
            array.append(QString(64, u'x'));
        QCborMap body;
        for (int index = 0; index < 10'000; ++index)
            body.insert(index, array);
        QVERIFY(messageLogText(body).size() < 100'000);
        QVERIFY(messageLogText(body).endsWith(u", ...}"));
        QVERIFY(messageLogText({{QString(10'000, u'k'), 1}}).size() < 100);
    }

    void controlCharactersAreReplaced()
    {
        QCOMPARE(printableText(u"a\nb\x1b[31mé\u0085\u007f€"_s), u"a?b?[31mé??€"_s);
        QCOMPARE(messageLogText({{u"k\n"_s, u"v\r\n"_s}}), uR"({"k?": "v??"})"_s);
    }
};

template class RunnableTests<tst_MessageLogText, QCoreApplication>;
#include "tst_messagelogtext.moc"
