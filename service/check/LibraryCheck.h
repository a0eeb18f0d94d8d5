#pragma once

#include "service/DeadlineLimits.h"
#include "service/Sandbox.h"
#include "service/check/CheckReport.h"
#include "service/check/LibraryRounds.h"

struct LibraryCheckLimits
{
    DeadlineLimits calls;
    RoundLimits rounds;
};

/// Tries the reading library at that absolute path against its interface. It is loaded in a child process with the
/// card service's restrictions; a library that crashes or hangs loses only that. For a process with one thread.
[[nodiscard]] CheckReport checkLibrary(const QByteArray& path, const SandboxPlaces& places,
                                       const LibraryCheckLimits& limits = {});
