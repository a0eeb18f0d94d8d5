#include "attestation/page/TextBreaking.h"

#include <QFontMetricsF>
#include <QTextLayout>
#include <QTextOption>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// More than a page can hold in its smallest letters: a text of megabytes must not hold up whoever waits for the page.
constexpr qsizetype maximumCharacters = 10'000;

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

// Most texts of a page are already drawable: no need to copy those.
bool isPlain(QStringView text)
{
    return std::ranges::all_of(text, [](QChar character) {
        const char16_t code = character.unicode();
        return (code >= 0x20 && code < 0x7f) || (code >= 0xa0 && code < 0x300 && code != QChar::SoftHyphen);
    });
}

// Length of a line that would end inside a hyphenated word, cut back to the blank before that word; 0 for a line that
// ends otherwise, or that holds no blank. Hyphenated words read better whole.
int lengthBeforeHyphenatedWord(QStringView paragraph, const QTextLine& line)
{
    const QStringView text = paragraph.sliced(line.textStart(), line.textLength());
    const bool isLast = line.textStart() + line.textLength() == paragraph.size();
    if (isLast || text.isEmpty() || text.back() != u'-')
        return 0;
    const qsizetype blank = text.lastIndexOf(u' ');
    if (blank < 0 || withoutBlanksAtEnd(text.first(blank)).isEmpty())
        return 0;
    return static_cast<int>(blank) + 1;
}

void breakParagraph(QStringView paragraph, const PageFont& font, double width, qsizetype maximumLines,
                    QList<BrokenLine>& lines)
{
    paragraph = withoutBlanksAtEnd(paragraph);
    if (paragraph.isEmpty()) {
        lines.append(BrokenLine{});
        return;
    }

    QTextLayout layout(paragraph.toString(), font.font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid() && lines.size() < maximumLines;
         line = layout.createLine()) {
        line.setLineWidth(width * pageUnitsPerPoint);
        if (const int length = lengthBeforeHyphenatedWord(paragraph, line); length > 0)
            line.setNumColumns(length);
        lines.append({withoutBlanksAtEnd(paragraph.sliced(line.textStart(), line.textLength())).toString(),
                      line.naturalTextWidth() / pageUnitsPerPoint});
    }
    layout.endLayout();
}

} // namespace

QString drawableText(const QString& whole)
{
    QString text = whole.first(std::min(whole.size(), maximumCharacters));
    if (isPlain(text))
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

QString textWithKnownGlyphs(const QString& text, const QFont& font)
{
    if (isPlain(text))
        return text;

    const QFontMetricsF metrics(font);
    QString known;
    known.reserve(text.size());
    for (const char32_t character : text.toUcs4()) {
        if (character == U'\n' || metrics.inFontUcs4(character))
            known += QChar::fromUcs4(character);
        else
            known += QChar(QChar::ReplacementCharacter);
    }
    return known;
}

QString shownText(const QString& text, const PageFont& font)
{
    return textWithKnownGlyphs(drawableText(text), font.font);
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
