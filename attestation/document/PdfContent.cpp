#include "attestation/document/PdfContent.h"

#include "attestation/document/PdfNumber.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/TextShaping.h"

#include <algorithm>
#include <cmath>

namespace {

// Points: what a reader cannot see.
constexpr double negligible = 0.001;

double greyOf(InkColor color)
{
    switch (color) {
    case InkColor::DarkGray:
        return 1.0 / 3;
    case InkColor::HeaderGray:
        return 0.7;
    case InkColor::White:
        return 1;
    case InkColor::Black:
        break;
    }
    return 0;
}

// A glyph that has no text of its own, because another one has the text of both, must not be read.
constexpr QStringView unreadText = u"\u200B";

bool allHaveText(const GlyphRun& run)
{
    return std::ranges::all_of(run.glyphs, [](const PlacedGlyph& glyph) { return glyph.textLength > 0; });
}

// The part of the line that the run shows.
QStringView textOf(const GlyphRun& run, QStringView line)
{
    qsizetype start = line.size();
    qsizetype end = 0;
    for (const PlacedGlyph& glyph : run.glyphs) {
        start = std::min(start, glyph.textStart);
        end = std::max(end, glyph.textStart + glyph.textLength);
    }
    return start < end ? line.sliced(start, end - start) : QStringView();
}

// Glyphs are written in the order of the text, also where that runs from right to left: so they are heard.
std::vector<GlyphRun> inOrderOfText(std::vector<GlyphRun> runs)
{
    for (GlyphRun& run : runs) {
        if (run.glyphs.back().textStart < run.glyphs.front().textStart)
            std::ranges::reverse(run.glyphs);
    }
    std::ranges::sort(runs, {}, [](const GlyphRun& run) { return run.glyphs.front().textStart; });
    return runs;
}

/// A glyph with the text that is read for it.
struct ReadGlyph
{
    hb_codepoint_t glyph = 0;
    QPointF position;
    QStringView text;
};

bool runsFromRightToLeft(QStringView text)
{
    return text.front().direction() == QChar::DirR || text.front().direction() == QChar::DirAL;
}

// The letters of a text, each with its marks.
std::vector<QStringView> lettersOf(QStringView text)
{
    std::vector<QStringView> letters;
    qsizetype start = 0;
    for (qsizetype i = 1; i <= text.size(); ++i) {
        if (i < text.size() && (text[i].isMark() || text[i].isLowSurrogate()))
            continue;
        letters.push_back(text.sliced(start, i - start));
        start = i;
    }
    return letters;
}

// Programs that go by places want one for each letter. Of the letters that one glyph joins from right to left, the
// glyph has the last, which is at its left end. Blanks within the glyph have the others.
void addLigature(const PlacedGlyph& ligature, QStringView text, hb_codepoint_t blank, std::vector<ReadGlyph>& glyphs)
{
    const std::vector<QStringView> letters = lettersOf(text);
    const double width = ligature.advance / double(letters.size());
    for (std::size_t i = 0; i + 1 < letters.size(); ++i) {
        const auto lettersToTheLeft = double(letters.size() - 1 - i);
        glyphs.push_back({blank, ligature.position + QPointF(lettersToTheLeft * width, 0), letters[i]});
    }
    glyphs.push_back({ligature.glyph, ligature.position, letters.back()});
}

std::vector<ReadGlyph> readGlyphsOf(const GlyphRun& run, QStringView line)
{
    std::vector<ReadGlyph> glyphs;
    glyphs.reserve(run.glyphs.size());
    for (const PlacedGlyph& glyph : run.glyphs) {
        const QStringView text = glyph.textLength > 0 ? line.sliced(glyph.textStart, glyph.textLength) : unreadText;
        const std::optional<hb_codepoint_t> blank =
            text.size() > 1 && runsFromRightToLeft(text) ? run.face->glyphOf(U' ') : std::nullopt;
        if (blank)
            addLigature(glyph, text, *blank, glyphs);
        else
            glyphs.push_back({glyph.glyph, glyph.position, text});
    }
    return glyphs;
}

} // namespace

PdfContent::PdfContent(const PaperSheet& sheet, PdfFonts& fonts)
    : m_fonts(fonts)
    , m_place(PageOnSheet::on(sheet.size()))
    , m_sheetHeight(sheet.size().height())
{
}

void PdfContent::paint(const PageInk& ink)
{
    // Every stroke of the page is a point wide.
    write({m_place.scale}, "w");
    for (const InkItem& item : ink)
        std::visit([this](const auto& kind) { draw(kind); }, item);
    endMark();
}

void PdfContent::draw(const InkFill& fill)
{
    markArtifact();
    const QRectF rect = onSheet(fill.rect);
    write({greyOf(fill.color)}, "g");
    write({rect.left(), rect.top(), rect.width(), rect.height()}, "re f");
}

void PdfContent::draw(const InkStroke& stroke)
{
    if (stroke.onScreenOnly)
        return;
    markArtifact();
    const QRectF rect = onSheet(stroke.rect);
    write({greyOf(stroke.color)}, "G");
    write({rect.left(), rect.top(), rect.width(), rect.height()}, "re S");
}

void PdfContent::draw(const InkRule& rule)
{
    markArtifact();
    const QPointF from = onSheet(rule.from);
    const QPointF to = onSheet(rule.to);
    write({greyOf(InkColor::Black)}, "G");
    write({from.x(), from.y()}, "m");
    write({to.x(), to.y()}, "l S");
}

void PdfContent::draw(const InkImage& image)
{
    const QRectF rect = onSheet(image.rect);
    mark(FigureMark{rect}, "/Figure");
    const QSizeF size = image.logo->image->size;
    // The drawing's y grows downwards.
    write({}, "q");
    write({rect.width() / size.width(), 0, 0, -rect.height() / size.height(), rect.left(), rect.top() + rect.height()},
          "cm");
    m_stream += logoFormName;
    m_stream += " Do Q\n";
}

void PdfContent::draw(const InkText& text)
{
    mark(text.place, "/P");
    // Where a text goes on, those who hear it hear two words.
    const QString line = text.endsInBlank ? text.text + u' ' : text.text;
    const ShapedText shaped = shapedText(line, text.font);
    const QPointF baseline = text.position + QPointF(0, text.font.ascent);
    write({greyOf(InkColor::Black)}, "g");
    m_stream += "BT\n";
    for (const GlyphRun& run : inOrderOfText(shaped.runs))
        drawRun(run, line, baseline, text.font.size);
    m_stream += "ET\n";
}

void PdfContent::drawRun(const GlyphRun& run, QStringView text, QPointF baseline, double size)
{
    const auto [name, font] = m_fonts.fontFor(*run.face);
    const double scale = size / run.face->unitsPerEm();
    const bool saysText = !allHaveText(run);
    if (saysText)
        m_stream += "/Span <</ActualText <FEFF" + hexadecimal(textOf(run, text)) + ">>> BDC\n";
    m_stream += name + ' ' + pdfNumber(size * m_place.scale) + " Tf\n";

    // Where the pen of the document's reader is, who knows the advances alone.
    QPointF pen;
    const auto startAt = [&](QPointF position) {
        const QPointF start = onSheet(baseline + position);
        write({1, 0, 0, 1, start.x(), start.y()}, "Tm");
        m_stream += '<';
        pen = position;
    };
    bool isOpen = false;
    for (const ReadGlyph& glyph : readGlyphsOf(run, text)) {
        const QPointF distance = glyph.position - pen;
        if (!isOpen || std::abs(distance.x()) > negligible || std::abs(distance.y()) > negligible) {
            if (isOpen)
                m_stream += "> Tj\n";
            startAt(glyph.position);
            isOpen = true;
        }
        m_stream += hexadecimal(font.codeOf(glyph.glyph, glyph.text));
        pen.rx() += run.face->advanceOf(glyph.glyph) * scale;
    }
    m_stream += "> Tj\n";
    if (saysText)
        m_stream += "EMC\n";
}

void PdfContent::markArtifact()
{
    if (m_marking == Marking::Artifact)
        return;
    endMark();
    m_stream += "/Artifact BMC\n";
    m_marking = Marking::Artifact;
}

// The lines of one text are one mark.
void PdfContent::mark(const ContentMark& mark, const char* tag)
{
    if (m_marking == Marking::Content && m_marks.back() == mark)
        return;
    endMark();
    m_stream += tag;
    m_stream += " <</MCID " + std::to_string(m_marks.size()) + ">> BDC\n";
    m_marks.push_back(mark);
    m_marking = Marking::Content;
}

void PdfContent::endMark()
{
    if (m_marking != Marking::None)
        m_stream += "EMC\n";
    m_marking = Marking::None;
}

void PdfContent::write(std::initializer_list<double> numbers, const char* operation)
{
    for (const double number : numbers)
        m_stream += pdfNumber(number) + ' ';
    m_stream += operation;
    m_stream += '\n';
}

QPointF PdfContent::onSheet(QPointF point) const
{
    const QPointF placed = m_place.topLeft + point * m_place.scale;
    return {placed.x(), m_sheetHeight - placed.y()};
}

QRectF PdfContent::onSheet(const QRectF& rect) const
{
    return {onSheet(rect.bottomLeft()), rect.size() * m_place.scale};
}
