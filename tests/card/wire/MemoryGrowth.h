#pragma once

#include <QtGlobal>

/// How much more memory the process has used at most than when this was made. One at a time. Under a sanitizer, whose
/// own memory is not to count, it is the memory of the heap.
class MemoryGrowth
{
public:
    MemoryGrowth();

    /// In KiB; negative when the system does not tell it.
    [[nodiscard]] qint64 peak() const;

private:
    qint64 m_before;
};
