#pragma once

#include "attestation/page/PageFonts.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <memory>
#include <variant>
#include <vector>

class QSvgRenderer;

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

/// One line of black text; the position is the top-left corner of its line box.
struct InkText
{
    QPointF position;
    QString text;
    PageFont font;
};

struct InkImage
{
    QRectF rect;
    std::shared_ptr<QSvgRenderer> image;
};

/// What lies on the page, in the order in which it is laid down. Positions in points from the page's top-left corner.
using InkItem = std::variant<InkFill, InkStroke, InkRule, InkText, InkImage>;
using PageInk = std::vector<InkItem>;
