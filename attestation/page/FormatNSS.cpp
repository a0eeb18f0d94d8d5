#include "attestation/page/FormatNSS.h"

#include "support/MXLog.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

QString formatNSS(const std::optional<QString>& number)
{
    if (!number || number->isEmpty())
        return u""_s;

    QString digits = *number;
    digits.remove(u' ');
    if (digits.size() <= 14)
        return *number;

    static const QRegularExpression groups(u"^(.)(.{2})(.{2})(.{2})(.{3})(.{3})(.{2})$"_s);
    if (!groups.isValid()) {
        MXLog::logDebug("Error while formating NSS: {}", groups.errorString());
        return *number;
    }
    const QRegularExpressionMatch match = groups.match(digits);
    if (!match.hasMatch())
        return *number;
    return match.capturedTexts().sliced(1).join(u' ');
}
