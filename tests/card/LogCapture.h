#pragma once

#include "support/MXLog.h"

#include <QString>
#include <QStringList>

#include <mutex>

/// Keeps what the process-wide logger writes, at every level. Made before other threads log, once per program.
class LogCapture
{
public:
    LogCapture()
    {
        MXLog::defaultLogger().setLogLevel(MXLog::Debug);
        MXLog::defaultLogger().setLineWriter([this](MXLog::Level level, std::string_view line) {
            const std::scoped_lock lock(m_mutex);
            m_lines.append({level, QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size()))});
        });
    }

    void clear()
    {
        const std::scoped_lock lock(m_mutex);
        m_lines.clear();
    }

    /// The lines of one level, or of all of them.
    [[nodiscard]] QStringList lines(std::optional<MXLog::Level> level = std::nullopt) const
    {
        const std::scoped_lock lock(m_mutex);
        QStringList found;
        for (const Line& line : m_lines) {
            if (!level || line.level == *level)
                found.append(line.text);
        }
        return found;
    }

private:
    struct Line
    {
        MXLog::Level level;
        QString text;
    };

    mutable std::mutex m_mutex;
    QList<Line> m_lines;
};
