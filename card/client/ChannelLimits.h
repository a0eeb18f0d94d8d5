#pragma once

#include <QtGlobal>

#include <chrono>

// How long the client waits for a card service, and how much of its log it keeps. Other limits are in other files. The
// size and shape of a message: card/wire/ServiceMessage.h and card/wire/ServiceMessageScanner.h. The time of a call to
// a card reader: service/DeadlineLibrary.h.

/// Limits of a channel's patience.
struct ChannelLimits
{
    /// A service that leaves a request unanswered for longer is ended. Our own answers before: it gives up its calls to
    /// a card reader after DeadlineLimits.
    std::chrono::milliseconds requestTimeout = std::chrono::seconds(60);
    /// A service whose input was closed and that does not leave within this is killed.
    std::chrono::milliseconds exitGrace = std::chrono::seconds(2);
    /// The same when the channel itself ends: the application's end waits for it, and a session's end for that.
    std::chrono::milliseconds stopGrace = std::chrono::seconds(1);
};

/// A killed process ends at once unless the kernel holds it in a device; a ServiceProcess that is destroyed waits no
/// longer than this for that.
inline constexpr std::chrono::milliseconds killPatience{1000};

/// Lines that reach the log in each of LogLimit's periods.
namespace ChannelLogLines {
inline constexpr int unsolicitedMessages = 200;
inline constexpr int errors = 200;      // of the service's standard error
inline constexpr int strayReplies = 10; // to numbers that do not wait
} // namespace ChannelLogLines

/// Bytes of a line of the service's standard error that reach the log.
inline constexpr qsizetype maximumErrorLine = 1024;
