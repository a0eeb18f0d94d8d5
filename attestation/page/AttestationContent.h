#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/page/AttestationTables.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

/// A text above the tables, never empty. Lengths in points, y downwards from the page's top-left corner.
struct PageText
{
    QPointF topLeft;
    QString text;
    double fontSize = 0;
    bool bold = false;
    bool isTitle = false;     ///< whether it is the document's title
    qsizetype linesBelow = 0; ///< how many lines more the text may take before it meets what is below
};

/// A table of the page and where it lies. The body is null when there is none: a table without rows is its header.
struct PageTable
{
    QRectF header;
    QRectF body;
    double rowHeight = 0;
    QList<TableColumn> columns;
    QList<TableRow> rows;
};

/// Sizes of the tables' texts, in points.
inline constexpr double tableTitleSize = 9;
inline constexpr double tableDataSize = 12;

/// What the page says and where, in reading order: the one description that its ink and its accessible tree are made
/// of. Empty values are left out of the texts and move none of the others.
[[nodiscard]] QList<PageText> pageTexts(const AttestationPage& page);
[[nodiscard]] QList<PageTable> pageTables(const AttestationPage& page, QSizeF frame);

/// Where a column's title, or a row's cell, lies; rows and columns count from 0.
[[nodiscard]] QRectF titleBox(const PageTable& table, qsizetype column);
[[nodiscard]] QRectF cellBox(const PageTable& table, qsizetype row, qsizetype column);
