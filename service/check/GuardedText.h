#pragma once

#include "include/pelmora/reading-library.h"

#include <QByteArray>

#include <optional>

/// A text's buffer that shows what is written outside of it. Bytes around it have known values, and behind them follows
/// memory that cannot be written to.
class GuardedText final
{
public:
    explicit GuardedText(std::size_t largest);
    Q_DISABLE_COPY(GuardedText)
    ~GuardedText();

    /// Prepares a buffer of that capacity, at most the largest.
    [[nodiscard]] pelmora_reading_text* prepare(std::size_t capacity);

    /// What the library did to the buffer's surroundings, in French; absent when it kept to the buffer.
    [[nodiscard]] std::optional<QString> damage() const;

    /// The written text; absent when the length is larger than the capacity.
    [[nodiscard]] std::optional<QByteArray> written() const;

    /// The same without a copy.
    [[nodiscard]] std::optional<QByteArrayView> view() const;

    /// Clears the buffer.
    void clear();

    /// The length that the library reports.
    [[nodiscard]] std::size_t length() const { return m_text.length; }

private:
    std::size_t m_pageSize;
    std::size_t m_mappedSize;
    char* m_memory; // the mapping
    char* m_end;    // of every buffer
    std::size_t m_capacity = 0;
    pelmora_reading_text m_text{};
};
