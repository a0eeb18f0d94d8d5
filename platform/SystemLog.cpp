#include "platform/SystemLog.h"

#include <mutex>

#include <syslog.h>
#include <unistd.h>

void writeToSystemLog(int priority, const std::string& line)
{
    static std::once_flag opened;
    std::call_once(opened, [] { openlog(nullptr, LOG_PID, LOG_USER); });
    syslog(LOG_USER | priority, "%s", line.c_str());

    if (isatty(STDERR_FILENO) == 1) {
        // One write, so that lines of several threads do not mix. A failed write to the terminal is ignored.
        const std::string terminalLine = line + '\n';
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, terminalLine.data(), terminalLine.size());
    }
}
