#include "card/client/MessageLogText.h"

#include "card/wire/ServiceVocabulary.h"

#include <QCborArray>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maximumText = 64; // characters; longer texts are documents
constexpr qsizetype maximumElements = 32;

constexpr std::array contentKeys{ServiceWord::vitale, ServiceWord::informations, ServiceWord::fundCodeLibelle};

bool holdsContent(const QString& key)
{
    return std::ranges::find(contentKeys, key) != contentKeys.end();
}

QString describeText(const QString& text, bool isContent)
{
    if (isContent || text.size() > maximumText)
        return u"text of %1 characters"_s.arg(text.size());
    return u'"' + printableText(text) + u'"';
}

QString describeScalar(const QCborValue& value, bool isContent)
{
    if (value.isString())
        return describeText(value.toString(), isContent);
    if (value.isByteArray())
        return u"%1 bytes"_s.arg(value.toByteArray().size());
    if (value.isArray())
        return u"array of %1"_s.arg(value.toArray().size());
    if (value.isMap())
        return u"map of %1"_s.arg(value.toMap().size());
    if (value.isInteger() && !isContent)
        return QString::number(value.toInteger());
    return u"other value"_s;
}

QString describeValue(const QCborValue& value, bool isContent)
{
    if (!value.isArray() || isContent)
        return describeScalar(value, isContent);
    const QCborArray elements = value.toArray();
    QStringList described;
    for (qsizetype index = 0; index < std::min(elements.size(), maximumElements); ++index)
        described.append(describeScalar(elements[index], false));
    if (elements.size() > maximumElements)
        described.append(u"..."_s);
    return u'[' + described.join(u", "_s) + u']';
}

} // namespace

QString messageLogText(const QCborMap& body)
{
    QStringList described;
    for (const auto [key, value] : body) {
        if (described.size() == maximumElements) {
            described.append(u"..."_s);
            break;
        }
        const QString name = key.toString();
        described.append(describeScalar(key, false) + u": "_s + describeValue(value, holdsContent(name)));
    }
    return u'{' + described.join(u", "_s) + u'}';
}

QString printableText(const QString& text)
{
    QString printable = text;
    for (QChar& character : printable) {
        if (character.category() == QChar::Other_Control)
            character = u'?';
    }
    return printable;
}

QStringList printableTexts(const QStringList& texts)
{
    QStringList printable;
    for (const QString& text : texts)
        printable.append(printableText(text));
    return printable;
}
