#include "card/client/LogLimit.h"

#include <utility>

bool LogLimit::admits()
{
    const auto now = Clock::now();
    if (now >= m_periodEnd) {
        tellLeftOut();
        m_periodEnd = now + m_period;
        m_left = m_lines;
    }
    if (m_left == 0) {
        ++m_leftOut;
        return false;
    }
    --m_left;
    return true;
}

void LogLimit::tellLeftOut()
{
    if (const quint64 count = std::exchange(m_leftOut, 0); count > 0)
        MXLog::defaultLogger().log(m_level, "Card service: {} more lines left out", count);
}
