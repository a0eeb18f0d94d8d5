#pragma once

#include "card/client/ChannelLimits.h"
#include "card/client/LogLimit.h"

#include <QByteArray>

/// Writes what a service says on its standard error to the log, line by line, at debug level: it may be about a
/// patient. Lines are bounded in length and in number (ChannelLimits.h).
class ServiceErrorLog final
{
public:
    /// What a read came to.
    enum class Reading
    {
        Some,
        Nothing,
        Ended
    };

    /// Reads a bounded slice of what is there, without waiting.
    Reading read(int descriptor);
    /// Reads what an ended service left there, at most so many slices, without waiting; the last line needs no end.
    void readLastWords(int descriptor, int maximumSlices);

private:
    void append(QByteArrayView bytes);
    void writeLine();
    void finish();

    LogLimit m_limit{MXLog::Debug, ChannelLogLines::errors};
    QByteArray m_line;
    bool m_isCut = false;
};
