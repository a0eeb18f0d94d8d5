#include "service/FundTable.h"
#include "service/SiteFunds.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString labelOf(const FundTable& table, const QString& scheme, const QString& fund)
{
    return table.label({scheme, fund}).value_or(u"(none)"_s);
}

} // namespace

class tst_FundTable : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theLineOfAFundOverridesThatOfItsScheme()
    {
        FundTable table;
        QCOMPARE(table.add(u"t"_s, "01;;Régime général\n01;751;CPAM de test\n"), QStringList());
        QCOMPARE(labelOf(table, u"01"_s, u"751"_s), u"CPAM de test"_s);
        QCOMPARE(labelOf(table, u"01"_s, u"752"_s), u"Régime général"_s);
        QCOMPARE(labelOf(table, u"01"_s, u""_s), u"Régime général"_s);
        QCOMPARE(labelOf(table, u" 01"_s, u"751 "_s), u"CPAM de test"_s);
    }

    void anUnknownOrMalformedCodeHasNoLabel()
    {
        FundTable table;
        QCOMPARE(table.add(u"t"_s, "01;751;CPAM de test"), QStringList());
        QCOMPARE(labelOf(table, u"01"_s, u"752"_s), u"(none)"_s);
        QCOMPARE(labelOf(table, u"02"_s, u"751"_s), u"(none)"_s);
        QCOMPARE(labelOf(table, u""_s, u""_s), u"(none)"_s);
        QCOMPARE(labelOf(table, u"01751"_s, u""_s), u"(none)"_s);
        QCOMPARE(labelOf(table, u"0"_s, u"1751"_s), u"(none)"_s);
    }

    void commentsBlanksAMarkAndOtherLineEndsAreAccepted()
    {
        FundTable table;
        QCOMPARE(table.add(u"t"_s, "\xEF\xBB\xBF# commentaire\r\n\r\n   \r\n 01 ; 751 ; CPAM de test \r\n"),
                 QStringList());
        QCOMPARE(labelOf(table, u"01"_s, u"751"_s), u"CPAM de test"_s);
    }

    void aBadLineIsSkippedAndNamed_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("too few fields") << QByteArray("01;751");
        QTest::newRow("too many fields") << QByteArray("01;751;a;b");
        QTest::newRow("other separator") << QByteArray("01,751,a");
        QTest::newRow("short scheme") << QByteArray("1;751;a");
        QTest::newRow("letters in the scheme") << QByteArray("0a;751;a");
        QTest::newRow("digits of another script") << QByteArray("٠١;751;a");
        QTest::newRow("long fund") << QByteArray("01;7511;a");
        QTest::newRow("no label") << QByteArray("01;751; ");
        QTest::newRow("endless label") << "01;751;" + QByteArray(201, 'a');
        QTest::newRow("control character") << QByteArray("01;751;a\x01"
                                                         "b");
        QTest::newRow("not UTF-8") << QByteArray("01;751;R\xE9gime");
        QTest::newRow("UTF-8 cut short") << QByteArray("01;751;R\xC3");
    }

    void aBadLineIsSkippedAndNamed()
    {
        QFETCH(QByteArray, line);
        FundTable table;
        const QStringList skipped = table.add(u"site.csv"_s, "# titre\n" + line + "\n02;;MSA\n");
        QCOMPARE(skipped, QStringList{u"site.csv, ligne 2 : ligne ignorée, « régime;caisse;libellé » attendu."_s});
        QCOMPARE(labelOf(table, u"01"_s, u"751"_s), u"(none)"_s);
        QCOMPARE(labelOf(table, u"02"_s, u""_s), u"MSA"_s);
    }

    void aFileThatIsMissingOrTooLargeIsReported()
    {
        const QTemporaryDir folder;
        FundTable table;
        const QString missing = folder.filePath(u"absent.csv"_s);
        const QStringList warnings = table.addFile(missing);
        QCOMPARE(warnings.size(), 1);
        QVERIFY(warnings.first().startsWith(missing + u" : table des caisses illisible"_s));

        const QString large = folder.filePath(u"grand.csv"_s);
        QVERIFY(writeFile(large, "01;;a\n" + QByteArray(1024 * 1024, '#')));
        QCOMPARE(table.addFile(large), QStringList{large + u" : table des caisses ignorée, plus de 1 Mio."_s});
        QCOMPARE(labelOf(table, u"01"_s, u""_s), u"(none)"_s);
    }

    void theShippedTableIsValidAndNamesTheSchemes_data()
    {
        QTest::addColumn<QString>("scheme");
        for (const char* scheme : {"01", "02", "03", "04", "05", "06", "07", "08", "09", "10", "12",
                                   "14", "15", "16", "17", "90", "91", "92", "93", "94", "95", "96"})
            QTest::newRow(scheme) << QString::fromLatin1(scheme);
    }

    void theShippedTableIsValidAndNamesTheSchemes()
    {
        QFETCH(QString, scheme);
        FundTable table;
        QCOMPARE(table.addFile(QStringLiteral(PELMORA_STAGE_SHARE "/funds/caisses.csv")), QStringList());
        QVERIFY(table.label({scheme, u"999"_s}).has_value());
    }

    void aSiteAddsAndReplacesFundsAndTheUsersOwnFileComesLast()
    {
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"share/funds/caisses.csv"_s), "01;;Livré\n02;;Livré\n03;;Livré\n"));
        QVERIFY(writeFile(folder.filePath(u"etc/MORVEL/caisses.csv"_s), "02;;Site\n03;;Site\n01;751;Site\nx\n"));
        QVERIFY(writeFile(folder.filePath(u"home/MORVEL/caisses.csv"_s), "03;;Poste\n"));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.filePath(u"home"_s)));
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(folder.filePath(u"etc"_s)));

        const SiteFunds funds = loadFunds(folder.filePath(u"share"_s));
        QCOMPARE(labelOf(funds.table, u"01"_s, u"001"_s), u"Livré"_s);
        QCOMPARE(labelOf(funds.table, u"01"_s, u"751"_s), u"Site"_s);
        QCOMPARE(labelOf(funds.table, u"02"_s, u""_s), u"Site"_s);
        QCOMPARE(labelOf(funds.table, u"03"_s, u""_s), u"Poste"_s);
        QCOMPARE(funds.warnings.size(), 1);
        QVERIFY(funds.warnings.first().contains(folder.filePath(u"etc/MORVEL/caisses.csv"_s) + u", ligne 4"_s));
    }
};

template class RunnableTests<tst_FundTable, QCoreApplication>;
#include "tst_fundtable.moc"
