#pragma once

#include "attestation/page/AttestationContent.h"
#include "attestation/page/AttestationPage.h"
#include "attestation/page/AttestationTables.h"
#include "attestation/page/PageInk.h"
#include "attestation/text/PageFonts.h"

#include <QSizeF>

#include <optional>

/// Lays the attestation out: from the page's values to its ink. A pure function of the values, the frame and the fonts,
/// written as the steps of one drawing. Lengths in points, y downwards.
class AttestationLayout
{
public:
    /// The page and the fonts must outlive the layout.
    AttestationLayout(const AttestationPage& page, QSizeF frame, const PageFonts& fonts);

    /// The whole page: white, border, logo, texts, tables.
    [[nodiscard]] static PageInk drawRect(const AttestationPage& page, QSizeF frame, const PageFonts& fonts);

    /// The font of a text above the tables, and the box that its lines take on the page.
    [[nodiscard]] PageFont fontOf(const PageText& text) const;
    [[nodiscard]] QRectF boxOf(const PageText& text) const;
    /// The box of the logo. Nothing on a page without one.
    [[nodiscard]] std::optional<QRectF> logoBox() const;

    void drawLogo();
    void drawMainText();
    void drawTables();
    void drawTableHeadersWithColumns(const QRectF& rect, const QList<TableColumn>& columns);
    void drawTableDataWithColumns(const QRectF& rect, double rowHeight, const QList<TableColumn>& columns,
                                  const QList<TableRow>& lines);

    /// What was laid down so far.
    [[nodiscard]] const PageInk& ink() const { return m_ink; }

private:
    void drawBackground();
    void drawTableRow(QPointF topLeft, double right, double rowHeight, const QList<TableColumn>& columns,
                      const TableRow& row);
    void drawColumnRules(const QRectF& rect, const QList<TableColumn>& columns);
    [[nodiscard]] double lineWidthOf(const PageText& text) const;
    void drawAtPoint(const PageText& text);
    void drawWithRect(const QRectF& rect, const QString& text, const PageFont& font, TableAlignment alignment);
    void nextBlock();
    [[nodiscard]] std::optional<PageFont> monospacedDigitsSystemFontOfSize(double size) const;

    const AttestationPage& m_page;
    QSizeF m_frame;
    const PageFonts& m_fonts;
    double m_left;        // every left edge of the page comes from the right margin
    ContentPlace m_place; // of what is drawn now
    PageInk m_ink;
};
