#include "service/ServiceLog.h"

#include <unistd.h>

void logLine(const QString& sentence)
{
    // All at once. What cannot be written has nobody to be told to.
    const QByteArray line = "com.morvel.lvit: " + sentence.toUtf8() + '\n';
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, line.constData(), static_cast<std::size_t>(line.size()));
}
