#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

#include <optional>

/// The two ends of the channel, which no child and no library can reach.
struct ChannelDescriptors
{
    FileDescriptor requests;
    FileDescriptor replies;
};

/// Keeps standard input and output for the channel: from here on file descriptor 0 is empty and 1 is standard error, so
/// that a library that reads or prints cannot corrupt the channel. Nothing when the system refuses (errno tells).
[[nodiscard]] std::optional<ChannelDescriptors> takeStandardChannel();

/// Turns core dumps off, which would hold cards, and SIGPIPE and SIGXFSZ too: a lost reader and a file at its limit are
/// seen when writing. False when the system refuses (errno tells).
[[nodiscard]] bool protectProcess();

/// The folder that holds the programs' resources, found from the running executable's own place.
[[nodiscard]] QString resourceFolder();
