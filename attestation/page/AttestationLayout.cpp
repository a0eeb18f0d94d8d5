#include "attestation/page/AttestationLayout.h"

#include "attestation/page/AttestationContent.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/TextBreaking.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr QSizeF logoBand{166.0, 100.0};
constexpr double unbounded = 1.0e6; // a line as long as it likes
constexpr QMarginsF cellMargins{5.0, 3.0, 5.0, 3.0};

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

std::optional<QRectF> AttestationLayout::logoBox() const
{
    if (!m_page.logo || !m_page.logo->image)
        return std::nullopt;

    const QSizeF natural = m_page.logo->image->size;
    const auto widthRatio = static_cast<float>(logoBand.width() / natural.width());
    const auto heightRatio = static_cast<float>(logoBand.height() / natural.height());
    QSizeF size = logoBand;
    if (widthRatio > heightRatio)
        size.setWidth(natural.width() * double(heightRatio));
    else if (heightRatio > widthRatio)
        size.setHeight(natural.height() * double(widthRatio));

    // Centred in the band at the very top of the page: the top margin plays no part.
    return QRectF(QPointF(m_left, (logoBand.height() - size.height()) * 0.5), size);
}

void AttestationLayout::drawLogo()
{
    if (const std::optional<QRectF> box = logoBox())
        m_ink.emplace_back(InkImage{.rect = *box, .logo = m_page.logo});
}

void AttestationLayout::drawMainText()
{
    for (const PageText& text : pageTexts(m_page)) {
        drawAtPoint(text);
        nextBlock();
    }
}

void AttestationLayout::drawTables()
{
    for (const PageTable& table : pageTables(m_page, m_frame)) {
        drawTableHeadersWithColumns(table.header, table.columns);
        if (!table.rows.isEmpty())
            drawTableDataWithColumns(table.body, table.rowHeight, table.columns, table.rows);
        nextBlock();
    }
}

void AttestationLayout::nextBlock()
{
    m_place = {.block = m_place.block + 1};
}

void AttestationLayout::drawTableHeadersWithColumns(const QRectF& rect, const QList<TableColumn>& columns)
{
    const PageFont font = m_fonts.systemFontOfSize(tableTitleSize);
    m_ink.emplace_back(InkFill{.rect = rect, .color = InkColor::HeaderGray});
    m_ink.emplace_back(InkStroke{.rect = rect});

    double x = rect.left();
    for (const TableColumn& column : columns) {
        const QRectF box(x, rect.top(), columnWidth(column), rect.height());
        drawWithRect(box.marginsRemoved(cellMargins), column.value(TableColumnKey::title).toString(), font,
                     LeftAlignment);
        ++m_place.column;
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
        m_place = {.block = m_place.block, .row = m_place.row + 1};
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
    const PageFont regular = m_fonts.systemFontOfSize(tableDataSize);
    const PageFont fixed = monospacedDigitsSystemFontOfSize(tableDataSize).value_or(regular);

    double x = topLeft.x();
    const qsizetype count = std::min(row.size(), columns.size());
    for (qsizetype i = 0; i < count; ++i) {
        const QRectF box(x, topLeft.y(), columnWidth(columns[i]), rowHeight);
        m_place.column = i;
        const bool isFixed = row[i].value(TableCellKey::fixeWidthFont).toBool();
        drawWithRect(box.marginsRemoved(cellMargins), row[i].value(TableCellKey::data).toString(),
                     isFixed ? fixed : regular, alignmentOf(columns[i]));
        x += box.width();
        if (x >= right)
            return;
    }
}

PageFont AttestationLayout::fontOf(const PageText& text) const
{
    return text.bold ? m_fonts.boldSystemFontOfSize(text.fontSize) : m_fonts.systemFontOfSize(text.fontSize);
}

// A text is one line, unless it would run off the page where there is room below for the lines that it needs.
double AttestationLayout::lineWidthOf(const PageText& text) const
{
    const PageFont font = fontOf(text);
    const double roomOnPage = m_frame.width() - m_left - text.topLeft.x();
    const qsizetype lineCount = breakText(shownText(text.text, font), font, roomOnPage, text.linesBelow + 2).size();
    return lineCount <= text.linesBelow + 1 ? roomOnPage : unbounded;
}

QRectF AttestationLayout::boxOf(const PageText& text) const
{
    const PageFont font = fontOf(text);
    QRectF box(text.topLeft, QSizeF());
    for (const BrokenLine& line : breakText(shownText(text.text, font), font, lineWidthOf(text), text.linesBelow + 1)) {
        box.setWidth(std::max(box.width(), line.width));
        box.setHeight(box.height() + font.lineHeight);
    }
    return box & QRectF(QPointF(), m_frame);
}

void AttestationLayout::drawAtPoint(const PageText& text)
{
    drawWithRect({text.topLeft, QSizeF(lineWidthOf(text), 0)}, text.text, fontOf(text), LeftAlignment);
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
    const QList<BrokenLine> lines = breakText(shownText(text, font), font, rect.width(), linesOnPage);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const BrokenLine& line = lines[i];
        position.setX(alignedLeft(rect, line.width, alignment));
        if (!line.text.isEmpty()) {
            const bool endsInBlank = i + 1 < lines.size() && !line.splitsWord;
            m_ink.emplace_back(InkText{position, line.text, font, m_place, endsInBlank});
        }
        position.ry() += font.lineHeight;
    }
}

// The family's figures are all of one width, so the fixed-width font is the regular one.
std::optional<PageFont> AttestationLayout::monospacedDigitsSystemFontOfSize(double size) const
{
    return m_fonts.systemFontOfSize(size);
}
