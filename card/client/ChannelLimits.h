#pragma once

#include <QtGlobal>

#include <chrono>

// Time limits of the client, and limits of its log lines. Limits of messages are in card/wire/ServiceMessage.h and
// card/wire/ServiceMessageScanner.h, those of calls to a reader in service/DeadlineLimits.h.

struct ChannelLimits
{
    /// A service that does not answer in time is ended. Our own answers within DeadlineLimits.
    std::chrono::milliseconds requestTimeout = std::chrono::seconds(60);
    /// A service that does not exit within this time after its input was closed is killed.
    std::chrono::milliseconds exitGrace = std::chrono::seconds(2);
    /// The same when the channel is stopped: the end of the application and of the session waits for it.
    std::chrono::milliseconds stopGrace = std::chrono::seconds(1);
};

/// How long a ServiceProcess's destructor waits for the killed process, which may be blocked in the kernel.
inline constexpr std::chrono::milliseconds killPatience{1000};

/// Maximum number of log lines in each of LogLimit's periods.
namespace ChannelLogLines {
inline constexpr int unsolicitedMessages = 200;
inline constexpr int errors = 200;      // from the service's standard error
inline constexpr int strayReplies = 10; // replies that match no request
} // namespace ChannelLogLines

/// Bytes of a line from the service's standard error that are logged.
inline constexpr qsizetype maximumErrorLine = 1024;
