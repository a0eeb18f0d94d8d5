#include "platform/IntegerValue.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class tst_IntegerValue : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theIntegerAtTheBeginningOfATextIsItsValue_data()
    {
        constexpr qint64 lowest = std::numeric_limits<qint64>::min();
        constexpr qint64 highest = std::numeric_limits<qint64>::max();
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("value");
        QTest::newRow("digits") << u"751"_s << qint64{751};
        QTest::newRow("leading zeros") << u"0081"_s << qint64{81};
        QTest::newRow("leading blanks") << u" \t\n42"_s << qint64{42};
        QTest::newRow("minus") << u"-7"_s << qint64{-7};
        QTest::newRow("plus") << u"+7"_s << qint64{7};
        QTest::newRow("two signs") << u"-+7"_s << qint64{0};
        QTest::newRow("followed by letters") << u"12ab34"_s << qint64{12};
        QTest::newRow("a point ends it") << u"1.9"_s << qint64{1};
        QTest::newRow("letters") << u"Auto"_s << qint64{0};
        QTest::newRow("empty") << u""_s << qint64{0};
        QTest::newRow("blanks") << u"  "_s << qint64{0};
        QTest::newRow("sign alone") << u"-"_s << qint64{0};
        QTest::newRow("digits of another script") << u"٣"_s << qint64{0};
        QTest::newRow("highest") << u"9223372036854775807"_s << highest;
        QTest::newRow("above the highest") << u"9223372036854775808"_s << highest;
        QTest::newRow("far above") << u"99999999999999999999999999"_s << highest;
        QTest::newRow("lowest") << u"-9223372036854775808"_s << lowest;
        QTest::newRow("below the lowest") << u"-9223372036854775809"_s << lowest;
    }

    void theIntegerAtTheBeginningOfATextIsItsValue()
    {
        QFETCH(const QString, text);
        QTEST(integerValue(text), "value");
    }
};

template class RunnableTests<tst_IntegerValue, void>;
#include "tst_integervalue.moc"
