#pragma once

#include "attestation/page/PageInk.h"

class QPainter;

/// Where a page is drawn: the screen shows the page's border, paper and files do not.
enum class PageMedium
{
    Screen,
    Document
};

/// The one drawing routine for screen, paper and file.
class PagePainter
{
public:
    PagePainter() = delete;

    /// Draws the ink through a painter whose unit is the page unit (see pageUnitsPerPoint), in the ink's order.
    static void paint(QPainter& painter, const PageInk& ink, PageMedium medium);
};
