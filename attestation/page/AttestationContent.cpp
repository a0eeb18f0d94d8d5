#include "attestation/page/AttestationContent.h"

#include "attestation/page/AttestationTitle.h"
#include "attestation/page/FormatNSS.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

constexpr double tablesWidth = 579.0;
constexpr double tablesTop = 230.5;
constexpr double headerHeight = 50.0;
constexpr double organismRowHeight = 25.0;
constexpr double beneficiaryRowHeight = 40.0;
// Tables lie half a point in, so that outlines one point wide cover whole points.
constexpr double halfPoint = 0.5;
// Room above the beneficiary rows: the organism's table and the header of theirs, without that half point.
constexpr double beneficiariesTop = tablesTop - halfPoint + headerHeight + organismRowHeight + headerHeight;

// Every left edge comes from the right margin.
double tablesLeft(const AttestationPage& page)
{
    return page.inset.right() + halfPoint;
}

PageTable organismTable(const AttestationPage& page)
{
    const QRectF header(tablesLeft(page), tablesTop, tablesWidth, headerHeight);
    return {.header = header,
            .body = {header.left(), header.bottom(), tablesWidth, organismRowHeight},
            .rowHeight = organismRowHeight,
            .columns = organismColumns(),
            .rows = {organismRow(page)}};
}

PageTable beneficiaryTable(const AttestationPage& page, double top, QSizeF frame)
{
    PageTable table{.header = {tablesLeft(page), top, tablesWidth, headerHeight},
                    .body = {},
                    .rowHeight = beneficiaryRowHeight,
                    .columns = beneficiaryColumns(),
                    .rows = {}};
    if (page.lines.isEmpty())
        return table;

    const auto count = double(page.lines.size());
    double bodyHeight = count * table.rowHeight;
    const double limit = frame.height() - page.inset.bottom();
    if (limit < bodyHeight + beneficiariesTop) {
        bodyHeight = limit - beneficiariesTop;
        table.rowHeight = bodyHeight / count;
    }
    table.body = {table.header.left(), table.header.bottom(), tablesWidth, bodyHeight};
    table.rows.reserve(page.lines.size());
    std::ranges::transform(page.lines, std::back_inserter(table.rows), beneficiaryRow);
    return table;
}

QRectF columnBox(const PageTable& table, double top, double height, qsizetype column)
{
    double left = table.header.left();
    for (qsizetype i = 0; i < column; ++i)
        left += columnWidth(table.columns[i]);
    return {left, top, columnWidth(table.columns[column]), height};
}

} // namespace

QList<PageText> pageTexts(const AttestationPage& page)
{
    const auto at = [&page](double y) { return QPointF(page.inset.right(), page.inset.top() + y); };
    const auto isGiven = [](const std::optional<QString>& text) { return text && !text->isEmpty(); };

    QList<PageText> texts;
    if (isGiven(page.fundName))
        texts.append({.topLeft = at(115), .text = *page.fundName, .fontSize = 13});
    if (isGiven(page.NSS))
        texts.append({.topLeft = at(140), .text = u"Numero de l'assuré : "_s + formatNSS(page.NSS), .fontSize = 13});
    if (isGiven(page.insuredName)) {
        texts.append(
            {.topLeft = at(160), .text = u"Nom de l'assuré : "_s + *page.insuredName, .fontSize = 13, .linesBelow = 1});
    }
    if (page.showRightLabel)
        texts.append(
            {.topLeft = at(195), .text = attestationTitle.toString(), .fontSize = 20, .bold = true, .isTitle = true});
    return texts;
}

QList<PageTable> pageTables(const AttestationPage& page, QSizeF frame)
{
    const PageTable organism = organismTable(page);
    return {organism, beneficiaryTable(page, organism.body.bottom(), frame)};
}

QRectF titleBox(const PageTable& table, qsizetype column)
{
    return columnBox(table, table.header.top(), table.header.height(), column);
}

QRectF cellBox(const PageTable& table, qsizetype row, qsizetype column)
{
    return columnBox(table, table.body.top() + double(row) * table.rowHeight, table.rowHeight, column);
}
