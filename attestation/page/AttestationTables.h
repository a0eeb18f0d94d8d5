#pragma once

#include "attestation/page/AttestationPage.h"

#include <QList>
#include <QString>
#include <QVariantMap>

/// Keys of a column description.
namespace TableColumnKey {
inline const QString title = QStringLiteral("TableTitle");                 ///< text; absent: no header text
inline const QString width = QStringLiteral("TableWidth");                 ///< number, points; absent: 0
inline const QString drawSeparator = QStringLiteral("TableDrawSeparator"); ///< boolean: rule on the right; absent: true
inline const QString alignment = QStringLiteral("TableAlignment");         ///< TableAlignment of the data cells
} // namespace TableColumnKey

/// Keys of a cell description.
namespace TableCellKey {
inline const QString data = QStringLiteral("TableData");                   ///< text; absent: the cell is blank
inline const QString fixeWidthFont = QStringLiteral("TableFixeWidthFont"); ///< boolean: digits of one width
} // namespace TableCellKey

// A column description holds it as a plain number, so every number is a value of it.
enum TableAlignment : int
{
    LeftAlignment = 0,
    RightAlignment = 1,
    CenterAlignment = 2
};

using TableColumn = QVariantMap;
using TableCell = QVariantMap;
using TableRow = QList<TableCell>; ///< cells in column order, no more than there are columns

/// The column's width in points.
[[nodiscard]] double columnWidth(const TableColumn& column);

/// The two tables of the page. The columns of each add up to the tables' width.
[[nodiscard]] const QList<TableColumn>& organismColumns();
[[nodiscard]] const QList<TableColumn>& beneficiaryColumns();

/// The cells of the organism table's one row, and of a beneficiary's.
[[nodiscard]] TableRow organismRow(const AttestationPage& page);
[[nodiscard]] TableRow beneficiaryRow(const BeneficiaryLine& line);
