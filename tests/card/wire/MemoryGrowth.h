#pragma once

#include <QtGlobal>

/// The largest growth of the process's memory since this object was made. Only one object may exist at a time. Under a
/// sanitizer only the heap is measured, because the sanitizer's own memory must not be counted.
class MemoryGrowth
{
public:
    MemoryGrowth();

    /// In KiB; negative when the system's report cannot be read.
    [[nodiscard]] qint64 peak() const;

private:
    qint64 m_before;
};
