#pragma once

#include "attestation/page/AttestationPage.h"

#include <QPointF>
#include <QSizeF>

/// A sheet of paper, without margins: A4, upright, unless it is said otherwise.
struct PaperSheet
{
    QSizeF paper = attestationPageSize; ///< in points, upright
    bool isLandscape = false;           ///< whether it is read with its long side across

    [[nodiscard]] QSizeF size() const { return isLandscape ? paper.transposed() : paper; }
};

/// Where the attestation's page lies on a sheet of paper. Lengths in points, from the sheet's top-left corner.
struct PageOnSheet
{
    double scale = 1.0; ///< of the page, the same in both directions
    QPointF topLeft;

    /// The page fits the sheet, made smaller where it has to be and never larger, and lies in its middle both ways.
    /// The sheet counts as a whole: no margin, not even the printer's own, moves or shrinks the page.
    [[nodiscard]] static PageOnSheet on(QSizeF sheet);
};
