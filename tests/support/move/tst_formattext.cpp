#include "support/move/FormatText.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_FormatText : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void placeholdersAreReplacedInOrder_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << u"rien"_s << QStringList() << u"rien"_s;
        QTest::newRow("both kinds") << u"%d, '%@'"_s << QStringList{u"12"_s, u"été"_s} << u"12, 'été'"_s;
        QTest::newRow("adjacent") << u"%@%@"_s << QStringList{u"a"_s, u"b"_s} << u"ab"_s;
        QTest::newRow("values like placeholders") << u"%@ %@"_s << QStringList{u"%@"_s, u"%d"_s} << u"%@ %d"_s;
        QTest::newRow("too many values") << u"%@"_s << QStringList{u"a"_s, u"b"_s} << u"a"_s;
        QTest::newRow("too few values") << u"%@ %@ 5%"_s << QStringList{u"a"_s} << u"a %@ 5%"_s;
        QTest::newRow("a lone sign") << u"100 % de %"_s << QStringList{u"a"_s} << u"100 % de %"_s;
    }

    void placeholdersAreReplacedInOrder()
    {
        QFETCH(const QString, format);
        QFETCH(const QStringList, values);
        QFETCH(const QString, text);
        QCOMPARE(formattedText(format, values), text);
    }
};

template class RunnableTests<tst_FormatText, void>;
#include "tst_formattext.moc"
