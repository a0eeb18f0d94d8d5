#include "service/MemoryClearing.h"

#include <array>
#include <cstddef>

#include <string.h>

// Not inlined: it clears its own stack frame.
[[gnu::noinline]] void clearUnusedStack()
{
    std::array<std::byte, std::size_t{256} * 1024> depth; // NOLINT(cppcoreguidelines-pro-type-member-init)
    ::explicit_bzero(depth.data(), depth.size());
}
