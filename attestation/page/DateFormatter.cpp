#include "attestation/page/DateFormatter.h"

#include <algorithm>

namespace {

std::optional<int> digitsValue(QStringView digits)
{
    int value = 0;
    for (const QChar digit : digits) {
        if (digit < u'0' || digit > u'9')
            return std::nullopt;
        value = value * 10 + (digit.unicode() - u'0');
    }
    return value;
}

// Length of the run of one letter that the pattern begins with.
qsizetype runLength(QStringView pattern)
{
    const auto end = std::ranges::find_if(pattern, [&](QChar letter) { return letter != pattern.front(); });
    return end - pattern.begin();
}

} // namespace

DateFormatter::DateFormatter(const QLocale& locale)
    : m_locale(locale)
{
}

std::optional<QDate> DateFormatter::dateFromString(QStringView text) const
{
    if (text.size() != m_dateFormat.size())
        return std::nullopt;

    int year = 0;
    int month = 0;
    int day = 0;
    for (QStringView pattern = m_dateFormat; !pattern.isEmpty();) {
        const qsizetype length = runLength(pattern);
        const QStringView field = text.first(length);
        const QChar letter = pattern.front();
        if (letter == u'd' || letter == u'M' || letter == u'y') {
            const std::optional<int> value = digitsValue(field);
            if (!value)
                return std::nullopt;
            if (letter == u'd')
                day = *value;
            else if (letter == u'M')
                month = *value;
            else
                year = length == 2 ? 2000 + *value : *value;
        } else if (field != pattern.first(length)) {
            return std::nullopt;
        }
        pattern = pattern.sliced(length);
        text = text.sliced(length);
    }

    const QDate date(year, month, day);
    return date.isValid() ? std::optional(date) : std::nullopt;
}

QString DateFormatter::stringFromDate(QDate date) const
{
    return m_locale.toString(date, m_dateFormat);
}
