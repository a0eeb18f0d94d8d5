#pragma once

#include <QString>

/// A line for whoever looks after the machine, in French, without anything of a card: it goes to standard error, from
/// where the application takes it to its log. Any thread; lines do not mix.
void logLine(const QString& sentence);
