#include "card/PelmoraError.h"
#include "card/client/CardServiceKeys.h"
#include "card/client/ReaderChoice.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_ReaderChoice : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theAcceptedReaderIsUsedForTheHealthCard_data()
    {
        QTest::addColumn<QStringList>("readers");
        QTest::addColumn<QString>("professional");
        QTest::newRow("alone") << QStringList{u"Feitian SCR301"_s} << u"Feitian SCR301"_s;
        QTest::newRow("first") << QStringList{u"Feitian SCR301"_s, u"X"_s} << u"X"_s;
        QTest::newRow("second") << QStringList{u"X"_s, u"Feitian SCR301"_s} << u"X"_s;
        QTest::newRow("second of three") << QStringList{u"A"_s, u"Feitian SCR301"_s, u"B"_s} << u"A"_s;
        QTest::newRow("last") << QStringList{u"A"_s, u"B"_s, u"Feitian SCR301"_s} << u"B"_s;
        QTest::newRow("twice") << QStringList{u"A"_s, u"Feitian SCR301"_s, u"Feitian SCR301"_s} << u"A"_s;
        QTest::newRow("after another letter case")
            << QStringList{u"feitian scr301"_s, u"Feitian SCR301"_s} << u"feitian scr301"_s;
        QTest::newRow("two of them") << QStringList{u"Feitian SCR301"_s, u"Feitian SCR301 (2)"_s}
                                     << u"Feitian SCR301 (2)"_s;
    }

    void theAcceptedReaderIsUsedForTheHealthCard()
    {
        QFETCH(const QStringList, readers);
        QFETCH(const QString, professional);
        const auto choice = readerChoice(readers);
        QVERIFY(choice.has_value());
        QCOMPARE(*choice, (QVariantMap{{ReaderKey::vitale.toString(), u"Feitian SCR301"_s},
                                       {ReaderKey::cps.toString(), professional}}));
    }

    void noReaderIsAnError()
    {
        const auto choice = readerChoice({});
        QVERIFY(!choice.has_value());
        QCOMPARE(choice.error().code(), PelmoraError::noReader().code());
    }

    void onlyReadersOfOtherModelsGiveAnError_data()
    {
        QTest::addColumn<QStringList>("readers");
        QTest::newRow("others") << QStringList{u"X"_s, u"Y"_s};
        QTest::newRow("other case") << QStringList{u"feitian scr301"_s};
        QTest::newRow("longer name") << QStringList{u"Feitian SCR301 00 00"_s};
    }

    void onlyReadersOfOtherModelsGiveAnError()
    {
        QFETCH(const QStringList, readers);
        const auto choice = readerChoice(readers);
        QVERIFY(!choice.has_value());
        QCOMPARE(choice.error().code(), PelmoraError::badReader().code());
    }
};

template class RunnableTests<tst_ReaderChoice, QCoreApplication>;

#include "tst_readerchoice.moc"
