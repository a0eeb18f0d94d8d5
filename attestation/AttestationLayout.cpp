#include "attestation/AttestationLayout.h"

#include "attestation/FormatNSS.h"
#include "attestation/TextBreaking.h"

#include <QSvgRenderer>

#include <algorithm>
#include <cmath>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

constexpr QSizeF logoBox{166.0, 100.0};
constexpr double tablesWidth = 579.0;
constexpr double tablesTop = 230.5;
constexpr double headerHeight = 50.0;
constexpr double organismRowHeight = 25.0;
constexpr double beneficiaryRowHeight = 40.0;
// Room above the beneficiary rows, counted without the half point that puts the outlines on whole points.
constexpr double beneficiariesTop = 355.0;
constexpr double unbounded = 1.0e6; // a line as long as it likes
constexpr QMarginsF cellMargins{5.0, 3.0, 5.0, 3.0};

double columnWidth(const TableColumn& column)
{
    return double(column.value(TableColumnKey::width).toFloat());
}

bool hasRule(const TableColumn& column)
{
    return column.value(TableColumnKey::drawSeparator, true).toBool();
}

TableAlignment alignmentOf(const TableColumn& column)
{
    return TableAlignment(column.value(TableColumnKey::alignment, LeftAlignment).toInt());
}

double alignedLeft(const QRectF& rect, double width, TableAlignment alignment)
{
    switch (alignment) {
    case RightAlignment:
        return rect.right() - width;
    case CenterAlignment:
        return rect.left() + (rect.width() - width) * 0.5;
    case LeftAlignment:
        break;
    }
    return rect.left();
}

} // namespace

AttestationLayout::AttestationLayout(const AttestationPage& page, QSizeF frame, const PageFonts& fonts)
    : m_page(page)
    , m_frame(frame)
    , m_fonts(fonts)
    , m_left(page.inset.right())
{
}

PageInk AttestationLayout::drawRect(const AttestationPage& page, QSizeF frame, const PageFonts& fonts)
{
    AttestationLayout layout(page, frame, fonts);
    layout.drawBackground();
    layout.drawLogo();
    layout.drawMainText();
    layout.drawTables();
    return std::move(layout.m_ink);
}

void AttestationLayout::drawBackground()
{
    const QRectF bounds(QPointF(), m_frame);
    m_ink.emplace_back(InkFill{.rect = bounds, .color = InkColor::White});
    m_ink.emplace_back(InkStroke{.rect = bounds, .color = InkColor::DarkGray, .onScreenOnly = true});
}

void AttestationLayout::drawLogo()
{
    if (!m_page.logo)
        return;

    const QSizeF natural = m_page.logo->defaultSize();
    const auto widthRatio = static_cast<float>(logoBox.width() / natural.width());
    const auto heightRatio = static_cast<float>(logoBox.height() / natural.height());
    QSizeF size = logoBox;
    if (widthRatio > heightRatio)
        size.setWidth(natural.width() * double(heightRatio));
    else if (heightRatio > widthRatio)
        size.setHeight(natural.height() * double(widthRatio));

    // Centred in the band at the very top of the page: the top margin plays no part.
    const QPointF topLeft(m_left, (logoBox.height() - size.height()) * 0.5);
    m_ink.emplace_back(InkImage{.rect = QRectF(topLeft, size), .image = m_page.logo});
}

void AttestationLayout::drawMainText()
{
    const auto lineTop = [this](double y) { return QPointF(m_left, m_page.inset.top() + y); };
    const auto isGiven = [](const std::optional<QString>& text) { return text && !text->isEmpty(); };
    const PageFont& regular = m_fonts.systemFontOfSize(13);

    if (isGiven(m_page.fundName))
        drawAtPoint(lineTop(115), *m_page.fundName, regular);
    if (isGiven(m_page.NSS))
        drawAtPoint(lineTop(140), u"Numero de l'assuré : "_s + formatNSS(m_page.NSS), regular);
    if (isGiven(m_page.insuredName))
        drawAtPoint(lineTop(160), u"Nom de l'assuré : "_s + *m_page.insuredName, regular, 1);
    if (m_page.showRightLabel)
        drawAtPoint(lineTop(195), attestationTitle.toString(), m_fonts.boldSystemFontOfSize(20));
}

void AttestationLayout::drawTables()
{
    // Half a point in, so that outlines one point wide cover whole points.
    const double left = m_left + 0.5;
    QRectF rect(left, tablesTop, tablesWidth, headerHeight);
    drawTableHeadersWithColumns(rect, organismColumns());
    rect = QRectF(left, rect.bottom(), tablesWidth, organismRowHeight);
    drawTableDataWithColumns(rect, organismRowHeight, organismColumns(), {organismRow(m_page)});

    rect = QRectF(left, rect.bottom(), tablesWidth, headerHeight);
    drawTableHeadersWithColumns(rect, beneficiaryColumns());
    if (m_page.lines.isEmpty())
        return;

    const auto count = double(m_page.lines.size());
    double rowHeight = beneficiaryRowHeight;
    double bodyHeight = count * rowHeight;
    const double limit = m_frame.height() - m_page.inset.bottom();
    if (limit < bodyHeight + beneficiariesTop) {
        bodyHeight = limit - beneficiariesTop;
        rowHeight = bodyHeight / count;
    }
    QList<TableRow> rows;
    rows.reserve(m_page.lines.size());
    std::ranges::transform(m_page.lines, std::back_inserter(rows), beneficiaryRow);
    drawTableDataWithColumns({left, rect.bottom(), tablesWidth, bodyHeight}, rowHeight, beneficiaryColumns(), rows);
}

void AttestationLayout::drawTableHeadersWithColumns(const QRectF& rect, const QList<TableColumn>& columns)
{
    const PageFont& font = m_fonts.systemFontOfSize(9);
    m_ink.emplace_back(InkFill{.rect = rect, .color = InkColor::HeaderGray});
    m_ink.emplace_back(InkStroke{.rect = rect});

    double x = rect.left();
    for (const TableColumn& column : columns) {
        const QRectF box(x, rect.top(), columnWidth(column), rect.height());
        drawWithRect(box.marginsRemoved(cellMargins), column.value(TableColumnKey::title).toString(), font,
                     LeftAlignment);
        x += columnWidth(column);
        if (x >= rect.right())
            break;
    }
    drawColumnRules(rect, columns);
}

void AttestationLayout::drawTableDataWithColumns(const QRectF& rect, double rowHeight,
                                                 const QList<TableColumn>& columns, const QList<TableRow>& lines)
{
    m_ink.emplace_back(InkFill{.rect = rect, .color = InkColor::White});
    m_ink.emplace_back(InkStroke{.rect = rect});
    if (lines.isEmpty())
        return;

    drawColumnRules(rect, columns);
    QPointF topLeft = rect.topLeft();
    for (const TableRow& row : lines) {
        drawTableRow(topLeft, rect.right(), rowHeight, columns, row);
        topLeft.ry() += rowHeight;
    }
}

// No rule is ever drawn on the right edge: a column that reaches it is the last.
void AttestationLayout::drawColumnRules(const QRectF& rect, const QList<TableColumn>& columns)
{
    double x = rect.left();
    for (const TableColumn& column : columns) {
        x += columnWidth(column);
        if (x >= rect.right())
            return;
        if (hasRule(column))
            m_ink.emplace_back(InkRule{.from = {x, rect.top()}, .to = {x, rect.bottom()}});
    }
}

void AttestationLayout::drawTableRow(QPointF topLeft, double right, double rowHeight, const QList<TableColumn>& columns,
                                     const TableRow& row)
{
    const PageFont& regular = m_fonts.systemFontOfSize(12);
    const PageFont fixed = monospacedDigitsSystemFontOfSize(12).value_or(regular);

    double x = topLeft.x();
    const qsizetype count = std::min(row.size(), columns.size());
    for (qsizetype i = 0; i < count; ++i) {
        const QRectF box(x, topLeft.y(), columnWidth(columns[i]), rowHeight);
        const bool isFixed = row[i].value(TableCellKey::fixeWidthFont).toBool();
        drawWithRect(box.marginsRemoved(cellMargins), row[i].value(TableCellKey::data).toString(),
                     isFixed ? fixed : regular, alignmentOf(columns[i]));
        x += box.width();
        if (x >= right)
            return;
    }
}

// A text is one line, unless it would run off the page where there is room below for the lines that it needs.
void AttestationLayout::drawAtPoint(QPointF topLeft, const QString& text, const PageFont& font, qsizetype roomBelow)
{
    const double roomOnPage = m_frame.width() - m_left - topLeft.x();
    const QString drawable = textWithKnownGlyphs(drawableText(text), font.font);
    const bool fits = breakText(drawable, font, roomOnPage, roomBelow + 2).size() <= roomBelow + 1;
    drawWithRect({topLeft, QSizeF(fits ? roomOnPage : unbounded, 0)}, text, font, LeftAlignment);
}

// The box gives the text its left edge, its width and its top. It has no bottom: a text longer than its box is not cut.
void AttestationLayout::drawWithRect(const QRectF& rect, const QString& text, const PageFont& font,
                                     TableAlignment alignment)
{
    if (text.isEmpty() || rect.width() <= 0)
        return;

    QPointF position = rect.topLeft();
    // What would lie below the page is not laid out at all.
    const auto linesOnPage = static_cast<qsizetype>(std::ceil((m_frame.height() - position.y()) / font.lineHeight));
    const QList<BrokenLine> lines =
        breakText(textWithKnownGlyphs(drawableText(text), font.font), font, rect.width(), linesOnPage);
    for (const BrokenLine& line : lines) {
        position.setX(alignedLeft(rect, line.width, alignment));
        if (!line.text.isEmpty())
            m_ink.emplace_back(InkText{.position = position, .text = line.text, .font = font});
        position.ry() += font.lineHeight;
    }
}

// The family's figures are all of one width, so the fixed-width font is the regular one.
std::optional<PageFont> AttestationLayout::monospacedDigitsSystemFontOfSize(double size) const
{
    return m_fonts.systemFontOfSize(size);
}
