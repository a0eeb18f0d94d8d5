// Clears every block of memory when it is freed, so that card data do not stay in unused memory. These functions
// replace the C library's in the whole program with all its libraries, so they are in the executable and not in a
// library. Builds with a sanitizer do not have them: it replaces these functions itself.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <malloc.h>
#include <string.h>

namespace {

/// Calls the next free(): that of the C library or of a preloaded allocator.
void giveBack(void* block) noexcept
{
    using Free = void (*)(void* block);
    // Not a static with a guard: dlsym may call free().
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

// The C library's realloc would not clear the old block.
extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    if (block == nullptr)
        return std::malloc(size);
    if (size == 0) {
        free(block);
        return nullptr;
    }
    const std::size_t usable = ::malloc_usable_size(block);
    // A block that is much too large is moved, so that memory is freed.
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
