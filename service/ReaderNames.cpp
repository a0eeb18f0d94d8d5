#include "service/ReaderNames.h"

#include "card/wire/ReaderModel.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

/// Without the two hexadecimal numbers at the end, such as " 00 01": reader and slot.
QStringView withoutNumbers(QStringView name)
{
    constexpr qsizetype size = 6;
    const auto isNumber = [](QStringView text) {
        return text.front() == u' ' && std::ranges::all_of(text.sliced(1), [](QChar digit) {
                   return (digit >= u'0' && digit <= u'9') || (digit >= u'A' && digit <= u'F') ||
                          (digit >= u'a' && digit <= u'f');
               });
    };
    if (name.size() < size || !isNumber(name.last(size).first(size / 2)) || !isNumber(name.last(size / 2)))
        return name;
    return name.chopped(size);
}

/// Without a last part in brackets, such as "[CCID Interface]" or "(serial number)", unless nothing else is left.
QStringView withoutPart(QStringView name, QChar opening, QChar closing)
{
    if (!name.endsWith(closing))
        return name;
    const qsizetype start = name.lastIndexOf(opening);
    return start > 0 ? name.first(start).trimmed() : name;
}

bool isAccepted(QStringView model)
{
    static constexpr std::array spellings{acceptedReader, QStringView{u"Feitian Technologies SCR301"}};
    const QString simple = model.toString().simplified();
    return std::ranges::any_of(
        spellings, [&simple](QStringView known) { return known.compare(simple, Qt::CaseInsensitive) == 0; });
}

QString withoutCompletions(QStringView systemName)
{
    const QStringView numberless = withoutNumbers(systemName).trimmed();
    const QStringView name = withoutPart(withoutPart(numberless, u'(', u')'), u'[', u']');
    return (name.isEmpty() ? systemName : name).toString();
}

QString model(const QString& systemName)
{
    return isAccepted(withoutCompletions(systemName.simplified())) ? acceptedReader.toString()
                                                                   : withoutCompletions(systemName);
}

} // namespace

QList<ReaderName> readerNames(const QList<QByteArray>& systemNames)
{
    QList<ReaderName> names;
    const auto isTaken = [&names](const QString& shown) {
        return std::ranges::find(names, shown, &ReaderName::shown) != names.end();
    };
    for (const QByteArray& systemName : systemNames) {
        const QString name = model(QString::fromUtf8(systemName));
        QString shown = name;
        for (int number = 2; isTaken(shown); ++number)
            shown = u"%1 (%2)"_s.arg(name).arg(number);
        names.append({.shown = shown, .system = systemName, .model = name});
    }
    return names;
}
