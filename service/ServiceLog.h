#pragma once

#include <QString>

/// Opens the connection to the system log. To be called once, before the process gives up making sockets.
void openSystemLog();

/// A line for whoever looks after the machine, in French, without anything of a card: it goes to the system log, and to
/// standard error. The application shows what comes from there only to those who debug, as libraries print there too.
/// Any thread; lines do not mix.
void logLine(const QString& sentence);
