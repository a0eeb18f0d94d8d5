#include "attestation/page/PagePainter.h"

#include <QColor>
#include <QPainter>
#include <QPen>
#include <QSvgRenderer>

namespace {

constexpr double unit = pageUnitsPerPoint;

QColor colorOf(InkColor color)
{
    switch (color) {
    case InkColor::DarkGray:
        return QColor::fromRgbF(1.0F / 3, 1.0F / 3, 1.0F / 3);
    case InkColor::HeaderGray:
        return QColor::fromRgbF(0.7F, 0.7F, 0.7F);
    case InkColor::White:
        return Qt::white;
    case InkColor::Black:
        break;
    }
    return Qt::black;
}

QRectF inUnits(const QRectF& rect)
{
    return {rect.topLeft() * unit, rect.size() * unit};
}

QPen penOf(InkColor color)
{
    return {colorOf(color), unit, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin};
}

class InkVisitor
{
public:
    InkVisitor(QPainter& painter, PageMedium medium)
        : m_painter(painter)
        , m_medium(medium)
    {
    }

    void operator()(const InkFill& fill) const { m_painter.fillRect(inUnits(fill.rect), colorOf(fill.color)); }

    void operator()(const InkStroke& stroke) const
    {
        if (stroke.onScreenOnly && m_medium != PageMedium::Screen)
            return;
        m_painter.setPen(penOf(stroke.color));
        m_painter.drawRect(inUnits(stroke.rect));
    }

    void operator()(const InkRule& rule) const
    {
        m_painter.setPen(penOf(InkColor::Black));
        m_painter.drawLine(rule.from * unit, rule.to * unit);
    }

    void operator()(const InkText& text) const
    {
        m_painter.setPen(Qt::black);
        m_painter.setFont(text.font.font);
        m_painter.drawText((text.position + QPointF(0, text.font.ascent)) * unit, text.text);
    }

    void operator()(const InkImage& image) const { image.image->render(&m_painter, inUnits(image.rect)); }

private:
    QPainter& m_painter;
    PageMedium m_medium;
};

} // namespace

void PagePainter::paint(QPainter& painter, const PageInk& ink, PageMedium medium)
{
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setBrush(Qt::NoBrush);
    const InkVisitor visitor(painter, medium);
    for (const InkItem& item : ink)
        std::visit(visitor, item);
}
