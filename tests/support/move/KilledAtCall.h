#pragma once

#include <QStringList>

/// Runs a program, and those that it starts, until one of them makes a system call for the n-th time, and kills that
/// one there. True when it was killed, or the program failed for it; false when all ended well before.
[[nodiscard]] bool isKilledAt(const QString& call, int n, const QStringList& command);
