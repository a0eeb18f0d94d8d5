#pragma once

#include "service/Sandbox.h"
#include "service/check/CheckReport.h"
#include "service/check/LibraryRounds.h"

struct LibraryCheckLimits
{
    std::chrono::milliseconds read{20'000};
    std::chrono::milliseconds other{10'000};
    RoundLimits rounds;
};

/// Tries the reading library at that absolute path against its interface. It is loaded in a child process with the
/// card service's restrictions; a library that crashes or hangs loses only that. For a process with one thread.
[[nodiscard]] CheckReport checkLibrary(const QByteArray& path, const SandboxPlaces& places,
                                       const LibraryCheckLimits& limits = {});
