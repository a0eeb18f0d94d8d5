#include "service/ReaderNames.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList shownNames(const QList<QByteArray>& systemNames)
{
    QStringList shown;
    for (const ReaderName& name : readerNames(systemNames))
        shown.append(name.shown);
    return shown;
}

} // namespace

class tst_ReaderNames : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aReaderIsNamedByItsModel_data()
    {
        QTest::addColumn<QByteArray>("systemName");
        QTest::addColumn<QString>("shown");
        const QString feitian = u"Feitian SCR301"_s;
        QTest::newRow("numbers") << QByteArray("Feitian SCR301 00 00") << feitian;
        QTest::newRow("hexadecimal numbers") << QByteArray("Feitian SCR301 0A f1") << feitian;
        QTest::newRow("interface") << QByteArray("Feitian SCR301 [CCID Interface] 00 00") << feitian;
        QTest::newRow("serial number") << QByteArray("Feitian SCR301 (123) 00 00") << feitian;
        QTest::newRow("both") << QByteArray("Feitian SCR301 [CCID Interface] (123) 00 00") << feitian;
        QTest::newRow("other case") << QByteArray("FEITIAN scr301 00 00") << feitian;
        QTest::newRow("doubled blanks") << QByteArray(" Feitian   SCR301  [CCID Interface]  00 00") << feitian;
        QTest::newRow("the maker's long form") << QByteArray("Feitian Technologies SCR301 00 00") << feitian;
        QTest::newRow("all of these") << QByteArray("feitian  TECHNOLOGIES SCR301 (123) 00 00") << feitian;
        QTest::newRow("another model of the maker") << QByteArray("Feitian SCR310 00 00") << u"Feitian SCR310"_s;
        QTest::newRow("a longer model") << QByteArray("Feitian SCR301 Pro 00 00") << u"Feitian SCR301 Pro"_s;
        QTest::newRow("nothing more") << QByteArray("Feitian SCR301") << feitian;
        QTest::newRow("interface without numbers") << QByteArray("Feitian SCR301 [CCID Interface]") << feitian;
        QTest::newRow("a model that ends in digits") << QByteArray("Reader 38 00 00") << u"Reader 38"_s;
        QTest::newRow("one number only") << QByteArray("Reader 00") << u"Reader 00"_s;
        QTest::newRow("no hexadecimal digits") << QByteArray("Reader 0G 00") << u"Reader 0G 00"_s;
        QTest::newRow("longer numbers") << QByteArray("Reader 000 00") << u"Reader 000 00"_s;
        QTest::newRow("parts within the name") << QByteArray("A [b] (c) D 00 00") << u"A [b] (c) D"_s;
        QTest::newRow("accents") << QByteArray("Lecteur n° 1 « Été » 00 00") << u"Lecteur n° 1 « Été »"_s;
        QTest::newRow("nothing but an interface") << QByteArray("[CCID] 00 00") << u"[CCID]"_s;
        QTest::newRow("nothing but numbers") << QByteArray(" 00 00") << u" 00 00"_s;
        QTest::newRow("empty") << QByteArray("") << u""_s;
    }

    void aReaderIsNamedByItsModel()
    {
        QFETCH(QByteArray, systemName);
        QFETCH(QString, shown);
        QCOMPARE(shownNames({systemName}), QStringList{shown});
    }

    void readersOfOneModelGetDifferentNames()
    {
        QCOMPARE(
            shownNames({"Feitian SCR301 00 00", "Alcor AU9540 00 00", "Feitian SCR301 [CCID] (2) 01 00",
                        "Feitian SCR301 (3) 02 00"}),
            (QStringList{u"Feitian SCR301"_s, u"Alcor AU9540"_s, u"Feitian SCR301 (2)"_s, u"Feitian SCR301 (3)"_s}));
    }

    void differentSpellingsOfOneModelCountAsOneModel()
    {
        QCOMPARE(shownNames({"Feitian Technologies SCR301 00 00", "FEITIAN SCR301 01 00"}),
                 (QStringList{u"Feitian SCR301"_s, u"Feitian SCR301 (2)"_s}));
        for (const ReaderName& name : readerNames({"Feitian Technologies SCR301 00 00", "FEITIAN SCR301 01 00"}))
            QCOMPARE(name.model, u"Feitian SCR301"_s);
    }

    void theSystemsOwnNamesAreKept()
    {
        const QList<QByteArray> names{"Feitian SCR301 00 00", "Feitian SCR301 00 01", "\xFF\xFE 00 00"};
        QList<QByteArray> kept;
        for (const ReaderName& name : readerNames(names))
            kept.append(name.system);
        QCOMPARE(kept, names);
    }

    void withoutReadersThereAreNoNames() { QCOMPARE(readerNames({}), QList<ReaderName>()); }
};

template class RunnableTests<tst_ReaderNames, QCoreApplication>;
#include "tst_readernames.moc"
