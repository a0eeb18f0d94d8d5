#include "attestation/text/TextBreaking.h"

#include "attestation/text/TextShaping.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

// More than a page can hold in its smallest letters: a text of megabytes must not hold up whoever waits for the page.
constexpr qsizetype maximumCharacters = 10'000;
constexpr qsizetype longestUsualLine = 200;

QStringView withoutBlanksAtEnd(QStringView text)
{
    while (!text.isEmpty() && text.back().isSpace())
        text.chop(1);
    return text;
}

bool isLineBreak(QChar character)
{
    return character == u'\n' || character == u'\v' || character == u'\f' || character == u'\r' ||
           character == u'\u0085' || character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
}

// Where the line that starts there and ends at the blank before its last word would end; absent when it holds no blank.
std::optional<qsizetype> endBeforeLastWord(QStringView paragraph, qsizetype start, qsizetype end)
{
    const QStringView line = paragraph.sliced(start, end - start);
    const qsizetype blank = line.lastIndexOf(u' ');
    if (blank < 0 || withoutBlanksAtEnd(line.first(blank)).isEmpty())
        return std::nullopt;
    return start + blank + 1;
}

/// Fills lines with the words of one paragraph.
class ParagraphBreaker
{
public:
    ParagraphBreaker(QStringView paragraph, const PageFont& font, double width)
        : m_paragraph(paragraph)
        , m_font(font)
        , m_width(width)
        , m_breaks(QTextBoundaryFinder::Line, paragraph.data(), paragraph.size())
    {
    }

    [[nodiscard]] bool isAtEnd() const { return m_start == m_paragraph.size(); }

    [[nodiscard]] BrokenLine nextLine()
    {
        const qsizetype end = endOfLine();
        const bool splitsWord = !isBreak(end);
        const QStringView line = withoutBlanksAtEnd(m_paragraph.sliced(m_start, end - m_start));
        m_start = end;
        return {line.toString(), widthOfText(line, m_font), splitsWord};
    }

private:
    [[nodiscard]] bool isBreak(qsizetype position)
    {
        m_breaks.setPosition(position);
        return m_breaks.isAtBoundary();
    }

    // The blanks at a line's end may stick out.
    [[nodiscard]] bool fits(qsizetype end) const
    {
        const QStringView line = withoutBlanksAtEnd(m_paragraph.sliced(m_start, end - m_start));
        return widthOfText(line, m_font) <= m_width + tolerance;
    }

    [[nodiscard]] qsizetype endOfLine()
    {
        m_breaks.setPosition(m_start);
        qsizetype end = m_start;
        for (qsizetype next = m_breaks.toNextBoundary(); next > 0 && fits(next); next = m_breaks.toNextBoundary())
            end = next;
        if (end == m_start)
            return endInsideWord();
        // Hyphenated words read better whole.
        if (end < m_paragraph.size() && m_paragraph[end - 1] == u'-')
            return endBeforeLastWord(m_paragraph, m_start, end).value_or(end);
        return end;
    }

    // At least one character: a line that held none would never end.
    [[nodiscard]] qsizetype endInsideWord() const
    {
        QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, m_paragraph.data(), m_paragraph.size());
        characters.setPosition(m_start);
        qsizetype end = characters.toNextBoundary();
        for (qsizetype next = characters.toNextBoundary(); next > 0 && fits(next); next = characters.toNextBoundary())
            end = next;
        return end;
    }

    // Points: less than can be seen, more than sums of advances can be off.
    static constexpr double tolerance = 0.001;

    QStringView m_paragraph;
    const PageFont& m_font;
    double m_width;
    QTextBoundaryFinder m_breaks;
    qsizetype m_start = 0;
};

void breakParagraph(QStringView paragraph, const PageFont& font, double width, qsizetype maximumLines,
                    QList<BrokenLine>& lines)
{
    paragraph = withoutBlanksAtEnd(paragraph);
    if (paragraph.isEmpty()) {
        lines.append(BrokenLine{});
        return;
    }
    // Most paragraphs are one line.
    if (paragraph.size() < longestUsualLine) {
        if (const double ownWidth = widthOfText(paragraph, font); ownWidth <= width) {
            lines.append({paragraph.toString(), ownWidth});
            return;
        }
    }
    for (ParagraphBreaker breaker(paragraph, font, width); !breaker.isAtEnd() && lines.size() < maximumLines;)
        lines.append(breaker.nextLine());
}

} // namespace

QString drawableText(const QString& whole)
{
    QString text = whole.first(std::min(whole.size(), maximumCharacters));
    if (isPlainText(text))
        return text;

    QString drawable;
    drawable.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        const bool isPair = character.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (isPair) {
            drawable += character;
            drawable += text[++i];
        } else if (isLineBreak(character)) {
            if (character == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
            drawable += u'\n';
        } else if (character == u'\t') {
            drawable += u' ';
        } else if (!character.isSurrogate() && character.category() != QChar::Other_Control &&
                   character.category() != QChar::Other_Format && !character.isNonCharacter()) {
            drawable += character;
        }
    }
    return drawable.normalized(QString::NormalizationForm_C);
}

QString textWithKnownGlyphs(const QString& text, const PageFont& font)
{
    if (isPlainText(text))
        return text;

    QString known;
    known.reserve(text.size());
    for (const char32_t character : text.toUcs4()) {
        if (character == U'\n' || font.faces->faceFor(character) != nullptr)
            known += QChar::fromUcs4(character);
        else
            known += QChar(QChar::ReplacementCharacter);
    }
    return known;
}

QString shownText(const QString& text, const PageFont& font)
{
    return textWithKnownGlyphs(drawableText(text), font);
}

QList<BrokenLine> breakText(const QString& text, const PageFont& font, double width, qsizetype maximumLines)
{
    QList<BrokenLine> lines;
    for (const QStringView paragraph : QStringView(text).tokenize(u'\n')) {
        if (lines.size() >= maximumLines)
            break;
        breakParagraph(paragraph, font, width, maximumLines, lines);
    }
    return lines;
}
