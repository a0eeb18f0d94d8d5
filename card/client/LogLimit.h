#pragma once

#include "support/MXLog.h"

#include <chrono>

/// Bounds how many lines of one kind reach the log, whatever a service sends: the first ones of each period. How many
/// were left out is told in one line, before the first line of a later period and at the end. One thread at a time.
class LogLimit final
{
public:
    static constexpr std::chrono::milliseconds usualPeriod = std::chrono::seconds(10);

    /// So many lines in each period; the line about those left out is written at the level.
    LogLimit(MXLog::Level level, int lines, std::chrono::milliseconds period = usualPeriod)
        : m_level(level)
        , m_lines(lines)
        , m_period(period)
    {
    }

    /// Whether one more line may be written.
    [[nodiscard]] bool admits();

    /// Tells now how many lines were left out, if any were.
    void tellLeftOut();

private:
    using Clock = std::chrono::steady_clock;

    MXLog::Level m_level;
    int m_lines;
    std::chrono::milliseconds m_period;
    Clock::time_point m_periodEnd;
    int m_left = 0;
    quint64 m_leftOut = 0;
};
