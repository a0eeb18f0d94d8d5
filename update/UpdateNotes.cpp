#include "update/UpdateNotes.h"

#include <QRegularExpression>
#include <QTextDocumentFragment>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maximumNotes = 10'000;
constexpr qsizetype maximumLine = 64;

// These include marks of writing direction, which can make a text look like another.
bool isHidden(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
        return character != u'\n' && character != u'\t';
    default:
        // Placeholder of an image in HTML.
        return character == QChar::ObjectReplacementCharacter;
    }
}

QString withoutHidden(QString text)
{
    text.removeIf(isHidden);
    return text;
}

bool hasTag(const QString& text)
{
    for (qsizetype at = text.indexOf(u'<'); at >= 0; at = text.indexOf(u'<', at + 1)) {
        if (at + 1 < text.size() && (text.at(at + 1).isLetter() || QStringView(u"/!").contains(text.at(at + 1))))
            return true;
    }
    return false;
}

QString textOfHtml(QString html)
{
    // QTextDocumentFragment drops the bullets of lists.
    static const QRegularExpression item(u"(<li\\b[^>]*>)"_s, QRegularExpression::CaseInsensitiveOption);
    html.replace(item, u"\\1• "_s);
    // A fragment does not load anything.
    return QTextDocumentFragment::fromHtml(html).toPlainText();
}

} // namespace

QString plainNotes(const QString& notes, bool mayBeHtml)
{
    const QString bounded = notes.first(std::min(notes.size(), maximumNotes));
    return withoutHidden(mayBeHtml && hasTag(bounded) ? textOfHtml(bounded) : bounded).trimmed();
}

QString shortLine(const QString& text)
{
    const QString line = withoutHidden(text).simplified();
    return line.first(std::min(line.size(), maximumLine));
}
