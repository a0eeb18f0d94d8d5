#include "attestation/page/AttestationLayout.h"
#include "attestation/page/AttestationTables.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/attestation/page/InkItems.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

TableColumn tableColumn(const QString& title, double width)
{
    return {{u"TableTitle"_s, title}, {u"TableWidth"_s, width}};
}

TableCell tableCell(const QString& data)
{
    return {{u"TableData"_s, data}};
}

} // namespace

class tst_AttestationTables : public TestCase
{
    Q_OBJECT

private:
    PageFonts m_fonts = pageFonts();
    AttestationPage m_blank;

    QStringList tableRules(const QList<TableColumn>& columns)
    {
        AttestationLayout layout(m_blank, {595, 842}, m_fonts);
        layout.drawTableDataWithColumns({10, 20, 100, 30}, 30, columns, {TableRow()});
        return rulesOf(layout.ink());
    }

    PageInk tableData(const QList<TableColumn>& columns, const QList<TableRow>& rows)
    {
        AttestationLayout layout(m_blank, {595, 842}, m_fonts);
        layout.drawTableDataWithColumns({10, 20, 200, 40}, 20, columns, rows);
        return layout.ink();
    }

    PageInk tableHeader(const QList<TableColumn>& columns)
    {
        AttestationLayout layout(m_blank, {595, 842}, m_fonts);
        layout.drawTableHeadersWithColumns({10, 20, 100, 50}, columns);
        return layout.ink();
    }

private Q_SLOTS:
    void columnsAfterTheOneThatReachesTheEdgeHaveNoRule()
    {
        QCOMPARE(tableRules({tableColumn(u"a"_s, 40), tableColumn(u"b"_s, 30), tableColumn(u"c"_s, 30)}),
                 QStringList({u"50 20 50 50"_s, u"80 20 80 50"_s}));
        QCOMPARE(tableRules({tableColumn(u"a"_s, 100), tableColumn(u"b"_s, 10)}), QStringList());
        QCOMPARE(tableRules({tableColumn(u"a"_s, 40), tableColumn(u"b"_s, 70), tableColumn(u"c"_s, -90)}),
                 QStringList(u"50 20 50 50"_s));
    }

    void headersAfterTheEdgeHaveNeitherTitleNorRule()
    {
        const PageInk ink = tableHeader({tableColumn(u"a"_s, 40), tableColumn(u"b"_s, 60), tableColumn(u"c"_s, 50)});
        QCOMPARE(textsOf(ink).size(), 2);
        QCOMPARE(placeOf(ink, u"c"_s), nowhere);
        QCOMPARE(placeOf(ink, u"b"_s), QPointF(55, 23));
        QCOMPARE(rulesOf(ink), QStringList(u"50 20 50 70"_s));
    }

    void cellsAfterTheEdgeAreNotDrawn()
    {
        const PageInk ink = tableData({tableColumn(u""_s, 150), tableColumn(u""_s, 50), tableColumn(u""_s, 60)},
                                      {{tableCell(u"a"_s), tableCell(u"b"_s), tableCell(u"c"_s)},
                                       {tableCell(u"d"_s), tableCell(u"e"_s), tableCell(u"f"_s)}});
        QCOMPARE(textsOf(ink).size(), 4);
        QCOMPARE(placeOf(ink, u"c"_s), nowhere);
        QCOMPARE(placeOf(ink, u"e"_s), QPointF(165, 43));
    }

    void aColumnHasARuleUnlessItsRuleIsOff()
    {
        TableColumn first = tableColumn(u""_s, 40);
        first.insert(u"TableDrawSeparator"_s, false);
        TableColumn second = tableColumn(u""_s, 30);
        second.insert(u"TableDrawSeparator"_s, true);
        QCOMPARE(tableRules({first, second, tableColumn(u""_s, 30)}), QStringList(u"80 20 80 50"_s));
    }

    void aColumnWithoutWidthHasNoRule()
    {
        TableColumn bare;
        bare.insert(u"TableTitle"_s, u"bare"_s);
        const PageInk ink = tableHeader({bare, tableColumn(u"b"_s, 50)});
        QCOMPARE(placeOf(ink, u"b"_s), QPointF(15, 23));
        QCOMPARE(placeOf(ink, u"bare"_s), nowhere);
    }

    void headersIgnoreTheAlignment()
    {
        TableColumn column = tableColumn(u"a"_s, 50);
        column.insert(u"TableAlignment"_s, 1);
        QCOMPARE(placeOf(tableHeader({column}), u"a"_s), QPointF(15, 23));
    }

    void aTableWithoutRowsIsAnEmptyFrame()
    {
        const PageInk ink = tableData({tableColumn(u""_s, 40), tableColumn(u""_s, 40)}, {});
        QCOMPARE(ink.size(), 2U);
        QCOMPARE(strokesOf(ink), QStringList(u"10 20 210 60"_s));
    }

    void rowsAreStackedWithoutRulesBetweenThem()
    {
        const PageInk ink = tableData({tableColumn(u""_s, 200)}, {{tableCell(u"a"_s)}, {tableCell(u"b"_s)}});
        QCOMPARE(placeOf(ink, u"a"_s), QPointF(15, 23));
        QCOMPARE(placeOf(ink, u"b"_s), QPointF(15, 43));
        QVERIFY(rulesOf(ink).isEmpty());
    }

    void theColumnsOfEachTableFillItsWidth()
    {
        for (const QList<TableColumn>& columns : {organismColumns(), beneficiaryColumns()}) {
            double width = 0;
            for (const TableColumn& column : columns)
                width += column.value(u"TableWidth"_s).toDouble();
            QCOMPARE(width, 579.0);
        }
    }

    void numbersAndDatesUseTheFixedWidthFigures()
    {
        const AttestationPage page = specimenPage(1);
        const auto fixed = [](const TableRow& row) {
            QString marks;
            for (const TableCell& cell : row)
                marks += cell.value(u"TableFixeWidthFont"_s).toBool() ? u'F' : u'-';
            return marks;
        };
        QCOMPARE(fixed(organismRow(page)), u"--F-"_s);
        QCOMPARE(fixed(beneficiaryRow(page.lines[0])), u"-FF-"_s);
    }

    void theModulationCellIsAlwaysBlank()
    {
        QCOMPARE(organismRow(specimenPage(1)).at(3).value(u"TableData"_s).toString(), QString());
        QCOMPARE(organismColumns().at(3).value(u"TableTitle"_s), u"modulation du ticket modérateur"_s);
    }
};

template class RunnableTests<tst_AttestationTables, QCoreApplication>;
#include "tst_attestationtables.moc"
