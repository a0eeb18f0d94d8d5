#pragma once

#include <chrono>

/// Time limits of calls to a reading library, shorter than the client's request limit (ChannelLimits). The check of a
/// library for integrators has the same.
struct DeadlineLimits
{
    std::chrono::milliseconds read{20'000};
    std::chrono::milliseconds other{10'000};
};
