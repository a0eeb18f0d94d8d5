#pragma once

#include "include/pelmora/reading-library.h"

#include <QByteArrayView>

#include <optional>
#include <vector>

/// Room for a text of an installed library; cleared when it goes.
class ClearedText final
{
public:
    explicit ClearedText(std::size_t capacity);
    ClearedText(const ClearedText&) = delete;
    ClearedText& operator=(const ClearedText&) = delete;
    ~ClearedText();

    /// What a library is given.
    [[nodiscard]] pelmora_reading_text* forLibrary() { return &m_text; }

    /// What it has written. Nothing when it claims to have written more than there is room for.
    [[nodiscard]] std::optional<QByteArrayView> written() const;

private:
    std::vector<char> m_bytes;
    pelmora_reading_text m_text;
};
