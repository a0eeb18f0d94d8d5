/*
 * An allocator to preload instead of the C library's, which does not know its blocks. No memory is used twice: the
 * content of a freed block is not overwritten.
 */
#include <errno.h>
#include <stdalign.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

static const size_t smallest = alignof(max_align_t);

static alignas(max_align_t) char pool[64 * 1024 * 1024];
static size_t used;

/* The size of a block is stored before it. */
static size_t* size_of(void* block)
{
    return (size_t*)(void*)((char*)block - sizeof(size_t));
}

static void* take(size_t alignment, size_t size)
{
    const size_t most = sizeof pool / 2;
    if (size > most || alignment > most)
        return NULL;
    /* Room for the size, the alignment and the block, rounded up so that the next block's size is aligned. */
    const size_t room = (smallest + alignment + size + smallest - 1) / smallest * smallest;
    const size_t start = __atomic_fetch_add(&used, room, __ATOMIC_RELAXED);
    if (start > sizeof pool - room)
        return NULL;
    const uintptr_t first = (uintptr_t)(pool + start + smallest);
    char* const block = pool + start + smallest + (alignment - first % alignment) % alignment;
    *size_of(block) = size;
    return block;
}

size_t malloc_usable_size(void* block)
{
    return block == NULL ? 0 : *size_of(block);
}

void* malloc(size_t size)
{
    return take(smallest, size);
}

void free(void* block)
{
    (void)block;
}

/* The memory was never used before, so it is zero. */
void* calloc(size_t count, size_t size)
{
    return size != 0 && count > SIZE_MAX / size ? NULL : malloc(count * size);
}

void* realloc(void* block, size_t size)
{
    void* const moved = malloc(size);
    if (moved != NULL && block != NULL)
        memcpy(moved, block, size < *size_of(block) ? size : *size_of(block));
    return moved;
}

void* memalign(size_t alignment, size_t size)
{
    return take(alignment < smallest ? smallest : alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size)
{
    *block = memalign(alignment, size);
    return *block == NULL ? ENOMEM : 0;
}
