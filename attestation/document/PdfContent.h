#pragma once

#include "attestation/document/PdfFonts.h"
#include "attestation/page/PageInk.h"
#include "attestation/page/PageOnSheet.h"

#include <initializer_list>
#include <string>
#include <variant>
#include <vector>

struct GlyphRun;

/// The name of the logo's form among the page's resources.
inline constexpr auto logoFormName = "/Logo";

/// The logo's figure in the page's structure, and where it is.
struct FigureMark
{
    QRectF rect;

    friend bool operator==(const FigureMark&, const FigureMark&) = default;
};

/// What a part of the content stream belongs to in the page's structure: the logo, or a text.
using ContentMark = std::variant<FigureMark, ContentPlace>;

/// The content stream of a page: its ink in PDF's operators. What has a meaning is marked with a number, under which
/// the structure refers to it; all the rest is marked as an artifact.
class PdfContent
{
public:
    /// The page's place on the sheet is PageOnSheet's. The fonts must outlive the content.
    PdfContent(const PaperSheet& sheet, PdfFonts& fonts);

    void paint(const PageInk& ink);

    [[nodiscard]] const std::string& stream() const { return m_stream; }
    /// What each number marks, from 0 on.
    [[nodiscard]] const std::vector<ContentMark>& marks() const { return m_marks; }

    /// A rectangle of the page, in the sheet's coordinates: the origin is its bottom-left corner, y grows upwards.
    [[nodiscard]] QRectF onSheet(const QRectF& rect) const;

private:
    void draw(const InkFill& fill);
    void draw(const InkStroke& stroke);
    void draw(const InkRule& rule);
    void draw(const InkText& text);
    void draw(const InkImage& image);
    void drawRun(const GlyphRun& run, QStringView text, QPointF baseline, double size);

    void markArtifact();
    void mark(const ContentMark& mark, const char* tag);
    void endMark();
    void write(std::initializer_list<double> numbers, const char* operation);
    [[nodiscard]] QPointF onSheet(QPointF point) const;

    enum class Marking
    {
        None,
        Artifact,
        Content // the last of the marks
    };

    PdfFonts& m_fonts;
    PageOnSheet m_place;
    double m_sheetHeight;
    std::string m_stream;
    std::vector<ContentMark> m_marks;
    Marking m_marking = Marking::None;
};
