#include "service/installed/ClearedText.h"

#include <string.h>

ClearedText::ClearedText(std::size_t capacity)
    : m_bytes(capacity)
    , m_text{.bytes = m_bytes.data(), .capacity = capacity, .length = 0}
{
}

ClearedText::~ClearedText()
{
    ::explicit_bzero(m_bytes.data(), m_bytes.size());
}

std::optional<QByteArrayView> ClearedText::written() const
{
    // m_bytes, not m_text.bytes: the library may have changed the structure.
    if (m_text.length > m_bytes.size())
        return std::nullopt;
    return QByteArrayView(m_bytes.data(), static_cast<qsizetype>(m_text.length));
}
