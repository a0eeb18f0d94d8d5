#include "service/check/CheckReport.h"

using namespace Qt::StringLiterals;

namespace {

QString listText(const QString& title, const QStringList& lines)
{
    if (lines.isEmpty())
        return {};
    QString text = u'\n' + title + u'\n';
    for (const QString& line : lines)
        text += u"  "_s + line + u'\n';
    return text;
}

QString conclusionText(qsizetype faults)
{
    if (faults == 0)
        return u"aucun défaut"_s;
    return faults == 1 ? u"un défaut"_s : u"%1 défauts"_s.arg(faults);
}

} // namespace

QString checkText(const CheckReport& report)
{
    constexpr qsizetype labelWidth = 20;
    QString text =
        u"Pelmora %1, service de lecture : contrôle d’%2\n\n"_s.arg(QLatin1StringView(PELMORA_VERSION), report.subject);
    for (const CheckReport::Fact& fact : report.facts)
        text += u"  "_s + fact.label.leftJustified(labelWidth) + fact.value + u'\n';
    QStringList faults;
    for (const CheckFault& fault : report.faults)
        faults.append(fault.place.isEmpty() ? fault.reason : u"%1 : %2"_s.arg(fault.place, fault.reason));
    text += listText(u"Remarques"_s, report.remarks) + listText(u"Défauts"_s, faults);
    return text + u"\nConclusion : %1.\n"_s.arg(conclusionText(report.faults.size()));
}
