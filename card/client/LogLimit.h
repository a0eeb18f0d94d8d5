#pragma once

#include "support/MXLog.h"

#include <chrono>

/// Limits how many lines of one kind are logged in each period. The number of dropped lines is logged before the first
/// line of a later period and at the end. One thread at a time.
class LogLimit final
{
public:
    static constexpr std::chrono::milliseconds usualPeriod = std::chrono::seconds(10);

    /// The line about dropped lines has the given level.
    LogLimit(MXLog::Level level, int lines, std::chrono::milliseconds period = usualPeriod)
        : m_level(level)
        , m_lines(lines)
        , m_period(period)
    {
    }

    [[nodiscard]] bool admits();

    /// Logs the number of dropped lines, if any.
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
