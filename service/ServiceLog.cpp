#include "service/ServiceLog.h"

#include <syslog.h>
#include <unistd.h>

void openSystemLog()
{
    // The service logs under the application's name.
    openlog("pelmora", LOG_PID | LOG_NDELAY, LOG_USER);
}

void logLine(const QString& sentence)
{
    const QByteArray text = sentence.toUtf8();
    syslog(LOG_USER | LOG_NOTICE, "com.morvel.lvit: %s", text.constData());

    // One write. A failed write is ignored.
    const QByteArray line = "com.morvel.lvit: " + text + '\n';
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, line.constData(), static_cast<std::size_t>(line.size()));
}
