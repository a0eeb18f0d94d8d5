#include "service/FundTable.h"

#include "card/wire/TextDecoding.h"

#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool isCode(QStringView text, qsizetype digits)
{
    return text.size() == digits &&
           std::ranges::all_of(text, [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
}

bool isLabel(QStringView text)
{
    // As much as fits on the page.
    constexpr qsizetype longestLabel = 200;
    return !text.isEmpty() && text.size() <= longestLabel &&
           std::ranges::all_of(text, [](QChar character) { return character.category() != QChar::Other_Control; });
}

} // namespace

QStringList FundTable::add(const QString& name, QByteArrayView content)
{
    QStringList skipped;
    qsizetype number = 0;
    if (content.startsWith("\xEF\xBB\xBF"))
        content = content.sliced(3);
    while (!content.isEmpty()) {
        ++number;
        const qsizetype end = content.indexOf('\n');
        const std::optional<QString> line = decodeUtf8(end < 0 ? content : content.first(end));
        content = end < 0 ? QByteArrayView() : content.sliced(end + 1);
        if (line && (line->trimmed().isEmpty() || line->trimmed().startsWith(u'#')))
            continue;

        const QStringList fields = line ? line->split(u';') : QStringList();
        const bool isEntry = fields.size() == 3 && isCode(fields[0].trimmed(), 2) &&
                             (fields[1].trimmed().isEmpty() || isCode(fields[1].trimmed(), 3)) &&
                             isLabel(fields[2].trimmed());
        if (isEntry)
            m_labels.insert(fields[0].trimmed() + fields[1].trimmed(), fields[2].trimmed());
        else
            skipped += u"%1, ligne %2 : ligne ignorée, « régime;caisse;libellé » attendu."_s.arg(name).arg(number);
    }
    return skipped;
}

QStringList FundTable::addFile(const QString& path)
{
    constexpr qint64 largestFile = qint64{1024} * 1024;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {u"%1 : table des caisses illisible (%2)."_s.arg(path, file.errorString())};
    const QByteArray content = file.read(largestFile + 1);
    if (content.size() > largestFile)
        return {u"%1 : table des caisses ignorée, plus de 1 Mio."_s.arg(path)};
    return add(path, content);
}

std::optional<QString> FundTable::label(const CardCoverage& coverage) const
{
    const QString scheme = coverage.scheme.trimmed();
    const QString fund = coverage.fund.trimmed();
    // Codes of other lengths could form another entry's key.
    if (!isCode(scheme, 2))
        return std::nullopt;
    auto found = isCode(fund, 3) ? m_labels.constFind(scheme + fund) : m_labels.constEnd();
    if (found == m_labels.constEnd())
        found = m_labels.constFind(scheme);
    return found == m_labels.constEnd() ? std::nullopt : std::optional(*found);
}
