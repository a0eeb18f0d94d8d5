#include "support/move/FormatText.h"

QString formattedText(QStringView format, const QStringList& values)
{
    QString text;
    qsizetype used = 0;
    for (qsizetype at = 0; at < format.size(); ++at) {
        const QStringView next = format.sliced(at, qMin<qsizetype>(2, format.size() - at));
        if (used < values.size() && (next == u"%@" || next == u"%d")) {
            text += values.at(used++);
            ++at;
        } else {
            text += format.at(at);
        }
    }
    return text;
}
