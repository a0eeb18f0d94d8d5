#include "attestation/page/FormatNSS.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_FormatNSS : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void anAbsentNumberIsAnEmptyText()
    {
        QCOMPARE(formatNSS(std::nullopt), u""_s);
        QCOMPARE(formatNSS(QString()), u""_s);
    }

    void fifteenCharactersAreShownInSevenGroups_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        QTest::newRow("plain") << u"185057800608436"_s << u"1 85 05 78 006 084 36"_s;
        QTest::newRow("with spaces") << u"1 85 05 78 006 084 36"_s << u"1 85 05 78 006 084 36"_s;
        QTest::newRow("with spaces elsewhere") << u"  1850578006  08436 "_s << u"1 85 05 78 006 084 36"_s;
        QTest::newRow("Corsica") << u"269062B12345634"_s << u"2 69 06 2B 123 456 34"_s;
        QTest::newRow("letters") << u"abcdefghijklmno"_s << u"a bc de fg hij klm no"_s;
    }
    void fifteenCharactersAreShownInSevenGroups()
    {
        QFETCH(QString, stored);
        QTEST(formatNSS(stored), "shown");
    }

    void aNumberOfAnyOtherLengthIsNotChanged_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::newRow("one character") << u"1"_s;
        QTest::newRow("fourteen") << u"18505780060843"_s;
        QTest::newRow("fourteen with spaces") << u"1 85 05 78 006 084 3"_s;
        QTest::newRow("only spaces") << u"                    "_s;
        QTest::newRow("sixteen") << u"1850578006084361"_s;
        QTest::newRow("sixteen with spaces") << u"1 85 05 78 006 084 361"_s;
        QTest::newRow("a line break inside") << u"1850578\n0608436"_s;
        QTest::newRow("long") << QString(300, u'1');
    }
    void aNumberOfAnyOtherLengthIsNotChanged()
    {
        QFETCH(QString, stored);
        QCOMPARE(formatNSS(stored), stored);
    }

    void otherBlanksThanSpacesCountAsCharacters()
    {
        QCOMPARE(formatNSS(u"18505780060843\t"_s), u"1 85 05 78 006 084 3\t"_s);
    }
};

template class RunnableTests<tst_FormatNSS, QCoreApplication>;
#include "tst_formatnss.moc"
