#pragma once

#include <string>

/// Writes a line to the system log, with a priority of syslog(3), and to standard error too when that is a terminal.
/// Usable on any thread.
void writeToSystemLog(int priority, const std::string& line);
