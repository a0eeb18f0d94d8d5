#include "attestation/page/DateFormatter.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QLocale french(QLocale::French, QLocale::France);

std::optional<QDate> parsed(const QString& dateFormat, const QString& text)
{
    DateFormatter formatter(french);
    formatter.setDateFormat(dateFormat);
    return formatter.dateFromString(text);
}

QString written(const QString& dateFormat, QDate date)
{
    DateFormatter formatter(french);
    formatter.setDateFormat(dateFormat);
    return formatter.stringFromDate(date);
}

} // namespace

class tst_DateFormatter : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aDateIsReadByThePattern_data()
    {
        QTest::addColumn<QString>("dateFormat");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDate>("date");
        QTest::newRow("day, month, year") << u"ddMMyyyy"_s << u"15031980"_s << QDate(1980, 3, 15);
        QTest::newRow("two-digit year") << u"yyMMdd"_s << u"800315"_s << QDate(2080, 3, 15);
        QTest::newRow("29 February of 00") << u"yyMMdd"_s << u"000229"_s << QDate(2000, 2, 29);
        QTest::newRow("29 February of a leap year") << u"ddMMyyyy"_s << u"29021980"_s << QDate(1980, 2, 29);
        QTest::newRow("with separators") << u"dd/MM/yyyy"_s << u"01/12/1950"_s << QDate(1950, 12, 1);
    }
    void aDateIsReadByThePattern()
    {
        QFETCH(QString, dateFormat);
        QFETCH(QString, text);
        QTEST(parsed(dateFormat, text).value_or(QDate()), "date");
    }

    void aTextThatIsNotADateDoesNotParse_data()
    {
        QTest::addColumn<QString>("dateFormat");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << u"ddMMyyyy"_s << u""_s;
        QTest::newRow("too short") << u"ddMMyyyy"_s << u"5031980"_s;
        QTest::newRow("too long") << u"ddMMyyyy"_s << u"150319800"_s;
        QTest::newRow("blank before") << u"ddMMyyyy"_s << u" 5031980"_s;
        QTest::newRow("no such day") << u"ddMMyyyy"_s << u"30021980"_s;
        QTest::newRow("no such month") << u"ddMMyyyy"_s << u"15131980"_s;
        QTest::newRow("month 00") << u"ddMMyyyy"_s << u"15001980"_s;
        QTest::newRow("day 00") << u"yyMMdd"_s << u"800300"_s;
        QTest::newRow("29 February") << u"yyMMdd"_s << u"810229"_s;
        QTest::newRow("letters") << u"ddMMyyyy"_s << u"15mars80"_s;
        QTest::newRow("sign") << u"ddMMyyyy"_s << u"+5031980"_s;
        QTest::newRow("other digits") << u"yyMMdd"_s << u"٨٠٠٣١٥"_s;
        QTest::newRow("wrong separator") << u"dd/MM/yyyy"_s << u"15-03-1980"_s;
    }
    void aTextThatIsNotADateDoesNotParse()
    {
        QFETCH(QString, dateFormat);
        QFETCH(QString, text);
        QVERIFY(!parsed(dateFormat, text));
    }

    void aDateIsWrittenByThePattern()
    {
        QCOMPARE(written(u"dd/MM/yyyy"_s, QDate(1980, 3, 5)), u"05/03/1980"_s);
        QCOMPARE(written(u"dd/MM/yy"_s, QDate(2000, 12, 25)), u"25/12/00"_s);
    }

    void theFormatIsChangedInPlace()
    {
        DateFormatter changed(french);
        changed.setDateFormat(u"ddMMyyyy"_s);
        QVERIFY(!changed.dateFromString(u"800315"));
        changed.setDateFormat(u"yyMMdd"_s);
        QCOMPARE(changed.dateFormat(), u"yyMMdd"_s);
        QVERIFY(changed.dateFromString(u"800315"));
    }
};

template class RunnableTests<tst_DateFormatter, QCoreApplication>;
#include "tst_dateformatter.moc"
