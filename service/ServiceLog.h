#pragma once

#include <QString>

/// Opens the system log. Called once, before the process can no longer make sockets.
void openSystemLog();

/// Writes a line in French for administrators, without data of a card, to the system log and to standard error. The
/// application logs the latter only at debug level, because libraries print there too. Any thread; lines do not mix.
void logLine(const QString& sentence);
