#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

#include <optional>

/// The channel's descriptors, which children do not inherit.
struct ChannelDescriptors
{
    FileDescriptor requests;
    FileDescriptor replies;
};

/// Moves standard input and output to other descriptors for the channel. Afterwards 0 is empty and 1 is standard error,
/// so that a library that reads or prints does not disturb the channel. Absent on failure (errno).
[[nodiscard]] std::optional<ChannelDescriptors> takeStandardChannel();

/// Switches off core dumps, which would contain card data, and SIGPIPE and SIGXFSZ. False on failure (errno).
[[nodiscard]] bool protectProcess();

/// The resource folder, found from the executable's path.
[[nodiscard]] QString resourceFolder();
