#pragma once

#include <utility>

#include <unistd.h>

/// Owns a file descriptor and closes it; -1 when it owns none.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    FileDescriptor(FileDescriptor&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~FileDescriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] bool isValid() const { return m_descriptor >= 0; }

private:
    int m_descriptor = -1;
};
