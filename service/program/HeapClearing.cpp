// Clears every block of memory that is given back: what a card said does not stay behind in blocks that nobody owns. It
// takes the place of the system's own functions for the whole program, all of its libraries included; that is why it is
// part of the executable, and of no library. A sanitizer, which has its own, goes without.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <malloc.h>
#include <string.h>

namespace {

/// Gives a block back to where malloc had it from: the system's C library, or the allocator that a machine preloads in
/// its place.
void giveBack(void* block) noexcept
{
    using Free = void (*)(void* block);
    // Not by a guarded initialisation, which could not bear that looking for it frees something.
    static constinit std::atomic<Free> next = nullptr;
    Free found = next.load(std::memory_order_relaxed);
    if (found == nullptr) {
        found = reinterpret_cast<Free>(::dlsym(RTLD_NEXT, "free"));
        next.store(found, std::memory_order_relaxed);
    }
    found(block);
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-no-malloc): what this is about.
extern "C" void free(void* block) noexcept
{
    if (block == nullptr)
        return;
    ::explicit_bzero(block, ::malloc_usable_size(block));
    giveBack(block);
}

// The system's own would leave the old block as it was.
extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    if (block == nullptr)
        return std::malloc(size);
    if (size == 0) {
        free(block);
        return nullptr;
    }
    const std::size_t usable = ::malloc_usable_size(block);
    // One that is much too large goes, so that memory is given back.
    if (size <= usable && size >= usable / 2) {
        ::explicit_bzero(static_cast<std::byte*>(block) + size, usable - size);
        return block;
    }
    void* const moved = std::malloc(size);
    if (moved == nullptr)
        return nullptr;
    std::memcpy(moved, block, std::min(usable, size));
    free(block);
    return moved;
}
// NOLINTEND(cppcoreguidelines-no-malloc)
