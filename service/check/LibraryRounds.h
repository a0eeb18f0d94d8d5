#pragma once

#include "service/check/LibraryCalls.h"

#include <chrono>
#include <functional>

/// How long each function is repeated: until the first of the two.
struct RoundLimits
{
    int rounds = 1000;
    std::chrono::seconds time{120};
};

/// Repeats the calls to a closed library, to find what it does not release. Each function is repeated on its own, which
/// tells whose fault it is, and then all of them from opening to closing.
class LibraryRounds final
{
public:
    /// All but the limits must outlive it. Without readers nothing is chosen or read.
    LibraryRounds(LibraryCalls& calls, const TrialNotes& notes, RoundLimits limits, const QList<QByteArray>& readers);

    void run();

private:
    /// Whether nothing was left unreleased. The round returns a result, which must always be the same.
    [[nodiscard]] bool repeat(const QString& function, const std::function<int()>& round);
    [[nodiscard]] int choose();
    [[nodiscard]] int read();
    [[nodiscard]] int wholeRound();

    LibraryCalls* m_calls;
    const TrialNotes* m_notes;
    RoundLimits m_limits;
    const QList<QByteArray>* m_readers;
};

/// The threads of this process.
[[nodiscard]] qsizetype threadsOfProcess();
