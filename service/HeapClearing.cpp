// Clears every block of memory that is given back: what a card said does not stay behind in blocks that nobody owns. It
// takes the place of the system's own functions for the whole program, all of its libraries included; that is why it is
// part of the executable, and of no library. A sanitizer, which has its own, goes without.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <malloc.h>
#include <string.h>

// The system's functions under the names that it keeps for those who replace them.
extern "C" void __libc_free(void* block) noexcept;

// NOLINTBEGIN(cppcoreguidelines-no-malloc): what this is about.
extern "C" void free(void* block) noexcept
{
    if (block == nullptr)
        return;
    ::explicit_bzero(block, ::malloc_usable_size(block));
    __libc_free(block);
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
