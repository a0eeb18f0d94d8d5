#include "attestation/viewer/PagePainter.h"

#include "attestation/page/SchemeLogos.h"
#include "attestation/text/TextShaping.h"

#include <QColor>
#include <QGlyphRun>
#include <QPainter>
#include <QPainterPath>
#include <QPen>

namespace {

// Glyphs are drawn from outlines of whole sizes: at sixteen units a point their places are exact at every zoom.
constexpr double unitsPerPoint = 16;

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

QPen penOf(InkColor color)
{
    return {colorOf(color), 1, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin};
}

QPainterPath pathOf(const FilledOutline& outline)
{
    QPainterPath path;
    path.setFillRule(outline.isEvenOdd ? Qt::OddEvenFill : Qt::WindingFill);
    for (const OutlineStep& step : outline.steps) {
        switch (step.kind) {
        case OutlineStep::Kind::Move:
            path.moveTo(step.points[0]);
            break;
        case OutlineStep::Kind::Line:
            path.lineTo(step.points[0]);
            break;
        case OutlineStep::Kind::Curve:
            path.cubicTo(step.points[0], step.points[1], step.points[2]);
            break;
        case OutlineStep::Kind::Close:
            path.closeSubpath();
            break;
        }
    }
    return path;
}

} // namespace

/// Draws each kind of ink.
class InkPainter
{
public:
    InkPainter(QPainter& painter, const PagePainter& fonts)
        : m_painter(painter)
        , m_fonts(fonts)
    {
    }

    void operator()(const InkFill& fill) { m_painter.fillRect(fill.rect, colorOf(fill.color)); }

    void operator()(const InkStroke& stroke)
    {
        m_painter.setPen(penOf(stroke.color));
        m_painter.drawRect(stroke.rect);
    }

    void operator()(const InkRule& rule)
    {
        m_painter.setPen(penOf(InkColor::Black));
        m_painter.drawLine(rule.from, rule.to);
    }

    void operator()(const InkText& text)
    {
        m_painter.save();
        m_painter.translate(text.position + QPointF(0, text.font.ascent));
        m_painter.scale(1 / unitsPerPoint, 1 / unitsPerPoint);
        m_painter.setPen(Qt::black);
        for (const GlyphRun& run : shapedText(text.text, text.font).runs)
            drawRun(run, text.font);
        m_painter.restore();
    }

    void operator()(const InkImage& image)
    {
        const VectorImage& drawing = *image.logo->image;
        m_painter.save();
        m_painter.translate(image.rect.topLeft());
        m_painter.scale(image.rect.width() / drawing.size.width(), image.rect.height() / drawing.size.height());
        for (const FilledOutline& outline : drawing.outlines) {
            const auto [red, green, blue] = outline.color;
            m_painter.fillPath(pathOf(outline), QColor::fromRgbF(float(red), float(green), float(blue)));
        }
        m_painter.restore();
    }

private:
    void drawRun(const GlyphRun& run, const PageFont& font)
    {
        QList<quint32> indexes;
        QList<QPointF> positions;
        for (const PlacedGlyph& glyph : run.glyphs) {
            indexes.append(glyph.glyph);
            positions.append(glyph.position * unitsPerPoint);
        }
        QGlyphRun glyphs;
        glyphs.setRawFont(m_fonts.fontFor(*run.face, font));
        glyphs.setGlyphIndexes(indexes);
        glyphs.setPositions(positions);
        m_painter.drawGlyphRun({}, glyphs);
    }

    QPainter& m_painter;
    const PagePainter& m_fonts;
};

void PagePainter::paint(QPainter& painter, const PageInk& ink) const
{
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setBrush(Qt::NoBrush);
    InkPainter inkPainter(painter, *this);
    for (const InkItem& item : ink)
        std::visit(inkPainter, item);
}

const QRawFont& PagePainter::fontFor(const FontFace& face, const PageFont& font) const
{
    const auto [entry, isNew] = m_fonts.try_emplace({&face, font.size});
    ScreenFont& known = entry->second;
    if (isNew) {
        known.owner = font.faces;
        known.font.loadFromData(face.file(), font.size * unitsPerPoint, QFont::PreferNoHinting);
    }
    return known.font;
}
