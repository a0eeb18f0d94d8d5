#include "platform/IntegerValue.h"

#include <limits>

qint64 integerValue(QStringView text)
{
    text = text.trimmed();
    const bool negative = text.startsWith(u'-');
    if (negative || text.startsWith(u'+'))
        text = text.sliced(1);

    // Accumulated as a negative number, whose range is the larger one by one.
    constexpr qint64 lowest = std::numeric_limits<qint64>::min();
    qint64 value = 0;
    for (const QChar character : text) {
        if (character < u'0' || character > u'9')
            break;
        const qint64 digit = character.unicode() - u'0';
        if (value < (lowest + digit) / 10) {
            value = lowest;
            break;
        }
        value = value * 10 - digit;
    }

    if (negative)
        return value;
    return value == lowest ? std::numeric_limits<qint64>::max() : -value;
}
