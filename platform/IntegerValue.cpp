#include "platform/IntegerValue.h"

#include <cstdlib>

qint64 integerValue(QStringView text)
{
    return std::strtoll(text.trimmed().toUtf8().constData(), nullptr, 10);
}
