#pragma once

#include <QStringList>

/// Runs a program and its child processes until one of them makes a system call for the n-th time, and kills that
/// process. True when the program was killed or has failed. False when it has ended successfully.
[[nodiscard]] bool isKilledAt(const QString& call, int n, const QStringList& command);
