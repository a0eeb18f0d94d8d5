#pragma once

#include <QStringList>

/// Runs a program and its child processes until one of them makes a system call for the n-th time, and kills that
/// process. True when it was killed, or the program failed because of it; false when all ended successfully before.
[[nodiscard]] bool isKilledAt(const QString& call, int n, const QStringList& command);
