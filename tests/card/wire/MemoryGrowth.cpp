#include "tests/card/wire/MemoryGrowth.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

#include <algorithm>
#include <cstddef>
#include <cstdlib>

// From the sanitizers' library. Its header is not part of GCC.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void* block);

namespace {

// In bytes. Blocks from before the hooks were installed are only counted when they are freed, so the sum may be
// negative.
qint64 inUse = 0;
qint64 largest = 0;

void addBlock(const volatile void* /*block*/, std::size_t size)
{
    inUse += static_cast<qint64>(size);
    largest = std::max(largest, inUse);
}

void removeBlock(const volatile void* block)
{
    inUse -= static_cast<qint64>(__sanitizer_get_allocated_size(block));
}

} // namespace

MemoryGrowth::MemoryGrowth()
{
    static const int installed = __sanitizer_install_malloc_and_free_hooks(addBlock, removeBlock);
    if (installed == 0)
        std::abort();
    m_before = inUse;
    largest = inUse;
}

qint64 MemoryGrowth::peak() const
{
    return (largest - m_before) / 1024;
}

#else

#include <QFile>

#include <malloc.h>

using namespace Qt::StringLiterals;

namespace {

/// A line of the system's report on the process's memory, in KiB.
qint64 memory(QByteArrayView line)
{
    QFile file(u"/proc/self/status"_s);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray content = file.readAll();
    const qsizetype start = content.indexOf(line) + line.size();
    return content.sliced(start, content.indexOf("kB", start) - start).trimmed().toLongLong();
}

} // namespace

MemoryGrowth::MemoryGrowth()
{
    malloc_trim(0);
    m_before = memory("VmRSS:");
}

qint64 MemoryGrowth::peak() const
{
    return m_before > 0 ? memory("VmHWM:") - m_before : -1;
}

#endif
