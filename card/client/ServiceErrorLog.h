#pragma once

#include "card/client/ChannelLimits.h"
#include "card/client/LogLimit.h"

#include <QByteArray>

/// Logs a service's standard error line by line, at debug level because it may be about a patient. Length and number of
/// lines are limited (ChannelLimits.h).
class ServiceErrorLog final
{
public:
    enum class Reading
    {
        Some,
        Nothing,
        Ended
    };

    /// Reads one slice without waiting.
    Reading read(int descriptor);
    /// Reads the rest of an ended service, at most that many slices, without waiting.
    void readLastWords(int descriptor, int maximumSlices);

private:
    void append(QByteArrayView bytes);
    void writeLine();
    void finish();

    LogLimit m_limit{MXLog::Debug, ChannelLogLines::errors};
    QByteArray m_line;
    bool m_isCut = false;
};
