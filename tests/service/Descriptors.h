#pragma once

#include <QByteArray>

#include <array>

#include <unistd.h>

/// The bytes from the descriptor up to their end.
inline QByteArray everythingFrom(int descriptor)
{
    QByteArray bytes;
    std::array<char, 4096> slice{};
    for (ssize_t count = 0; (count = ::read(descriptor, slice.data(), slice.size())) > 0;)
        bytes.append(slice.data(), count);
    return bytes;
}
