#pragma once

#include "attestation/text/PageFonts.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <memory>
#include <variant>
#include <vector>

struct SchemeLogo;

/// The few colours of the page: greys by their white level, from 0 (black) to 1.
enum class InkColor
{
    Black,
    DarkGray,
    HeaderGray,
    White
};

struct InkFill
{
    QRectF rect;
    InkColor color = InkColor::White;
};

/// The outline of a rectangle, 1 point wide, centred on its edges.
struct InkStroke
{
    QRectF rect;
    InkColor color = InkColor::Black;
    bool onScreenOnly = false;
};

/// A straight black rule, 1 point wide.
struct InkRule
{
    QPointF from;
    QPointF to;
};

/// The part of the page's content that a text belongs to: one of the texts above the tables, or a cell of a table.
/// Blocks count from 0 through the texts and then the tables; row 0 of a table is its header.
struct ContentPlace
{
    qsizetype block = 0;
    qsizetype row = 0;
    qsizetype column = 0;

    friend bool operator==(const ContentPlace&, const ContentPlace&) = default;
};

/// One line of black text; the position is the top-left corner of its line box.
struct InkText
{
    QPointF position;
    QString text;
    PageFont font;
    ContentPlace place;
    bool endsInBlank = false; ///< whether another word follows on the next line
};

struct InkImage
{
    QRectF rect;
    std::shared_ptr<const SchemeLogo> logo;
};

/// What lies on the page, in the order in which it is laid down. Positions in points from the page's top-left corner.
using InkItem = std::variant<InkFill, InkStroke, InkRule, InkText, InkImage>;
using PageInk = std::vector<InkItem>;
