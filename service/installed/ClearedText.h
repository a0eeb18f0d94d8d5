#pragma once

#include "include/pelmora/reading-library.h"

#include <QByteArrayView>

#include <optional>
#include <vector>

/// A buffer for a text of an installed library, cleared by its destructor.
class ClearedText final
{
public:
    explicit ClearedText(std::size_t capacity);
    Q_DISABLE_COPY(ClearedText)
    ~ClearedText();

    [[nodiscard]] pelmora_reading_text* forLibrary() { return &m_text; }

    /// The written text; absent when the reported length is larger than the buffer.
    [[nodiscard]] std::optional<QByteArrayView> written() const;

private:
    std::vector<char> m_bytes;
    pelmora_reading_text m_text;
};
