#pragma once

#include "attestation/viewer/PageElement.h"

#include <QAccessibleTableCellInterface>
#include <QAccessibleTableInterface>

#include <functional>
#include <vector>

struct PageTable;

/// A table of the page. Its children are the column titles, then the cells row by row. A column without a title shares
/// that of the column to its left.
class PageTableElement final : public PageElement, public QAccessibleTableInterface
{
public:
    /// The text as the page shows it in that size (points).
    using ShownText = std::function<QString(const QString&, double)>;

    PageTableElement(DocumentView& view, QAccessibleInterface& parent, const PageTable& table, const ShownText& shown);

    void* interface_cast(QAccessible::InterfaceType type) override;

    [[nodiscard]] QAccessibleInterface* cellAt(int row, int column) const override;
    [[nodiscard]] int columnCount() const override { return static_cast<int>(m_titles.size()); }
    [[nodiscard]] int rowCount() const override { return m_rowCount; }
    [[nodiscard]] QString columnDescription(int column) const override;
    [[nodiscard]] QString rowDescription(int /*row*/) const override { return {}; }
    /// The child with the column's title.
    [[nodiscard]] QAccessibleInterface* titleOf(int column) const;

    [[nodiscard]] QAccessibleInterface* caption() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* summary() const override { return nullptr; }

    // Nothing can be selected.
    [[nodiscard]] int selectedCellCount() const override { return 0; }
    [[nodiscard]] QList<QAccessibleInterface*> selectedCells() const override { return {}; }
    [[nodiscard]] int selectedColumnCount() const override { return 0; }
    [[nodiscard]] int selectedRowCount() const override { return 0; }
    [[nodiscard]] QList<int> selectedColumns() const override { return {}; }
    [[nodiscard]] QList<int> selectedRows() const override { return {}; }
    [[nodiscard]] bool isColumnSelected(int /*column*/) const override { return false; }
    [[nodiscard]] bool isRowSelected(int /*row*/) const override { return false; }
    bool selectRow(int /*row*/) override { return false; }
    bool selectColumn(int /*column*/) override { return false; }
    bool unselectRow(int /*row*/) override { return false; }
    bool unselectColumn(int /*column*/) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent* /*event*/) override {}

private:
    void addTitles(DocumentView& view, const PageTable& table, const ShownText& shown);
    void addCells(DocumentView& view, const PageTable& table, const ShownText& shown);

    std::vector<int> m_titles; // for each column, the index of its title
    int m_titleCount = 0;
    int m_rowCount = 0;
};

class PageCellElement final : public PageElement, public QAccessibleTableCellInterface
{
public:
    PageCellElement(DocumentView& view, PageTableElement& table, Content content, int row, int column);

    void* interface_cast(QAccessible::InterfaceType type) override;

    [[nodiscard]] bool isSelected() const override { return false; }
    [[nodiscard]] QList<QAccessibleInterface*> columnHeaderCells() const override;
    [[nodiscard]] QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    [[nodiscard]] int columnIndex() const override { return m_column; }
    [[nodiscard]] int rowIndex() const override { return m_row; }
    [[nodiscard]] int columnExtent() const override { return 1; }
    [[nodiscard]] int rowExtent() const override { return 1; }
    [[nodiscard]] QAccessibleInterface* table() const override { return &m_table; }

private:
    PageTableElement& m_table;
    int m_row;
    int m_column;
};
