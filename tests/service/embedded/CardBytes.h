#pragma once

#include <QByteArray>

/// A data object with the shortest length; bytes of the tag and value as they are.
inline QByteArray tlv(const char* tagDigits, const QByteArray& value)
{
    QByteArray object = QByteArray::fromHex(tagDigits);
    const auto size = static_cast<quint32>(value.size());
    if (size >= 0x100)
        object += QByteArray("\x82") + static_cast<char>(size >> 8U) + static_cast<char>(size);
    else if (size >= 0x80)
        object += QByteArray("\x81") + static_cast<char>(size);
    else
        object += static_cast<char>(size);
    return object + value;
}
