#include "platform/files/FileName.h"

#include <QTextBoundaryFinder>

namespace {

// The limit of Linux file systems.
constexpr qsizetype maximumBytes = 255;

QString withoutSeparators(QString text)
{
    for (QChar& character : text) {
        const QChar::Category category = character.category();
        if (character == u'/' || category == QChar::Other_Control || category == QChar::Separator_Line ||
            category == QChar::Separator_Paragraph) {
            character = u'_';
        }
    }
    return text;
}

QString cutToBytes(const QString& text, qsizetype bytes)
{
    if (text.toUtf8().size() <= bytes)
        return text;
    // At a grapheme boundary, so that a letter keeps its accents.
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype kept = 0;
    for (qsizetype end = finder.toNextBoundary(); end > 0; end = finder.toNextBoundary()) {
        if (text.first(end).toUtf8().size() > bytes)
            break;
        kept = end;
    }
    if (kept > 0)
        return text.first(kept);
    // The first character alone is too long: it is cut between its accents.
    return QString::fromUtf8(text.toUtf8().first(bytes)).remove(QChar::ReplacementCharacter);
}

} // namespace

QString fileNameFromText(const QString& text, const QString& extension)
{
    const QString suffix = u'.' + extension;
    return cutToBytes(withoutSeparators(text), maximumBytes - suffix.toUtf8().size()) + suffix;
}
