#pragma once

#include <string>

/// Writes a line to the system log (priority of syslog(3)) and to a terminal on standard error. Any thread.
void writeToSystemLog(int priority, const std::string& line);
