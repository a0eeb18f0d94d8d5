#pragma once

#include "include/pelmora/reading-library.h"

#include <QByteArrayView>

#include <optional>
#include <vector>

/// The capacity of each kind of text in bytes, as documented in the header.
namespace ReadingRoom {
inline constexpr std::size_t card = std::size_t{4} * 1024 * 1024;
inline constexpr std::size_t readers = std::size_t{64} * 1024;
inline constexpr std::size_t version = 1024;
} // namespace ReadingRoom

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
