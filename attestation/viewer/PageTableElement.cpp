#include "attestation/viewer/PageTableElement.h"

#include "attestation/page/AttestationContent.h"

#include <utility>

namespace {

QString titleText(const PageTable& table, qsizetype column)
{
    return table.columns[column].value(TableColumnKey::title).toString();
}

// The first line of the first title.
QString tableName(const PageTable& table, const PageTableElement::ShownText& shown)
{
    return table.columns.isEmpty() ? QString() : shown(titleText(table, 0).section(u'\n', 0, 0), tableTitleSize);
}

} // namespace

PageTableElement::PageTableElement(DocumentView& view, QAccessibleInterface& parent, const PageTable& table,
                                   const ShownText& shown)
    : PageElement(view, parent,
                  {.role = QAccessible::Table,
                   .name = tableName(table, shown),
                   .part = table.rows.isEmpty() ? table.header : table.header.united(table.body)})
    , m_rowCount(static_cast<int>(table.rows.size()))
{
    addTitles(view, table, shown);
    addCells(view, table, shown);
}

void PageTableElement::addTitles(DocumentView& view, const PageTable& table, const ShownText& shown)
{
    for (qsizetype column = 0; column < table.columns.size();) {
        QRectF part = titleBox(table, column);
        const QString title = shown(titleText(table, column), tableTitleSize);
        do {
            part |= titleBox(table, column++);
            m_titles.push_back(m_titleCount);
        } while (column < table.columns.size() && titleText(table, column).isEmpty());
        addChild(new PageTextElement(view, *this, {QAccessible::ColumnHeader, title, part}));
        ++m_titleCount;
    }
}

void PageTableElement::addCells(DocumentView& view, const PageTable& table, const ShownText& shown)
{
    for (int row = 0; row < rowCount(); ++row) {
        for (int column = 0; column < columnCount(); ++column) {
            const TableCell cell = table.rows[row].value(column);
            const QString text = shown(cell.value(TableCellKey::data).toString(), tableDataSize);
            addChild(
                new PageCellElement(view, *this, {QAccessible::Cell, text, cellBox(table, row, column)}, row, column));
        }
    }
}

void* PageTableElement::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this) : nullptr;
}

QAccessibleInterface* PageTableElement::cellAt(int row, int column) const
{
    if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount())
        return nullptr;
    return child(m_titleCount + row * columnCount() + column);
}

QAccessibleInterface* PageTableElement::titleOf(int column) const
{
    return column >= 0 && column < columnCount() ? child(m_titles[std::size_t(column)]) : nullptr;
}

QString PageTableElement::columnDescription(int column) const
{
    const QAccessibleInterface* title = titleOf(column);
    return title != nullptr ? title->text(QAccessible::Name) : QString();
}

PageCellElement::PageCellElement(DocumentView& view, PageTableElement& table, Content content, int row, int column)
    : PageElement(view, table, std::move(content))
    , m_table(table)
    , m_row(row)
    , m_column(column)
{
}

void* PageCellElement::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TableCellInterface ? static_cast<QAccessibleTableCellInterface*>(this) : nullptr;
}

QList<QAccessibleInterface*> PageCellElement::columnHeaderCells() const
{
    QAccessibleInterface* title = m_table.titleOf(m_column);
    return title != nullptr ? QList{title} : QList<QAccessibleInterface*>();
}
