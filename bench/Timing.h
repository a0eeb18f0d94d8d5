#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <ratio>
#include <vector>

// What the benchmarks share: times, their median, and the end of one that cannot measure.

/// The time that the work takes, in microseconds by default.
template <typename Unit = std::micro, typename Work>
double timeOf(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, Unit>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values)
{
    const auto middle = values.begin() + std::ssize(values) / 2;
    std::ranges::nth_element(values, middle);
    return *middle;
}

[[noreturn]] inline void fail(const char* reason)
{
    std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, reason);
    std::exit(1);
}
