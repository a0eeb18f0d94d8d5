#include "prefs/PaneGrid.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGridLayout>
#include <QStyle>

#include <algorithm>
#include <vector>

namespace {

// The widest label in any pane, so that the controls of all panes start at the same position.
constexpr QStringView widestLabel{u"Mises à jour\u00A0:"};

// For large fonts.
constexpr int narrowMargin = 6; // points

struct Cell
{
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
};

Cell cellAt(const QGridLayout& grid, int index)
{
    Cell cell;
    grid.getItemPosition(index, &cell.row, &cell.column, &cell.rows, &cell.columns);
    return cell;
}

// Only buttons and menus cannot become narrower.
int widestControl(const QGridLayout& grid)
{
    int width = 0;
    for (int index = 0; index < grid.count(); ++index) {
        const QWidget* widget = grid.itemAt(index)->widget();
        if (qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget))
            width = std::max(width, widget->sizeHint().width());
    }
    return width;
}

// Makes two rows of each: the label, and the rest below.
void putLabelsAbove(QGridLayout& grid)
{
    std::vector<std::pair<Cell, QLayoutItem*>> items;
    while (grid.count() > 0) {
        const Cell cell = cellAt(grid, 0);
        items.emplace_back(cell, grid.takeAt(0));
    }
    const int columns = grid.columnCount();
    const QMargins margins = grid.contentsMargins();
    grid.setContentsMargins(narrowMargin, margins.top(), narrowMargin, margins.bottom());
    for (const auto& [cell, item] : items) {
        const bool isLabel = cell.column == 0 && cell.columns == 1;
        // The control moves to the label's column.
        const int column = cell.column == 1 ? 0 : cell.column;
        if (isLabel)
            grid.addItem(item, cell.row * 2, 0, 1, columns, Qt::AlignLeft);
        else
            grid.addItem(item, cell.row * 2 + 1, column, cell.rows, cell.columns + cell.column - column,
                         item->alignment());
    }
}

} // namespace

void arrangePaneGrid(QGridLayout& grid, int width)
{
    const QWidget& contents = *grid.parentWidget();
    const int labels = contents.fontMetrics().horizontalAdvance(widestLabel.toString());
    const QMargins margins = grid.contentsMargins();
    const int bar = contents.style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &contents);
    const int room = width - margins.left() - margins.right() - bar;
    if (labels + grid.horizontalSpacing() + widestControl(grid) > room)
        putLabelsAbove(grid);
    else
        grid.setColumnMinimumWidth(0, labels);
}
