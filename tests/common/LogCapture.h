#pragma once

#include "support/MXLog.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>
#include <optional>

/// Records the lines of the process-wide logger, at every level. Made before other threads log, once per program.
/// Threads may still log after its destruction.
class LogCapture
{
public:
    LogCapture()
    {
        MXLog::defaultLogger().setLogLevel(MXLog::Debug);
        MXLog::defaultLogger().setLineWriter([kept = m_kept](MXLog::Level level, std::string_view line) {
            const std::scoped_lock lock(kept->mutex);
            kept->lines.append({level, QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size()))});
        });
    }

    void clear()
    {
        const std::scoped_lock lock(m_kept->mutex);
        m_kept->lines.clear();
    }

    /// The lines of one level, or of all of them.
    [[nodiscard]] QStringList lines(std::optional<MXLog::Level> level = std::nullopt) const
    {
        const std::scoped_lock lock(m_kept->mutex);
        QStringList found;
        for (const Line& line : m_kept->lines) {
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

    // The logger uses it after the capture's destruction.
    struct Kept
    {
        std::mutex mutex;
        QList<Line> lines;
    };

    std::shared_ptr<Kept> m_kept = std::make_shared<Kept>();
};
