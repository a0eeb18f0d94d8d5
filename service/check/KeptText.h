#pragma once

#include <QByteArrayView>

#include <array>
#include <optional>

/// A card's text to search this process's memory for. It is kept in another form, which the search does not find.
class KeptText final
{
public:
    /// Takes the longest text between two tags of the document, up to a limit.
    explicit KeptText(QByteArrayView document);

    /// Whether it is in writable memory; absent when the document has no text that is long enough, or when the memory
    /// cannot be read.
    [[nodiscard]] std::optional<bool> isInMemory() const;

private:
    static constexpr qsizetype longest = 64;

    [[nodiscard]] QByteArrayView masked() const { return {m_masked.data(), m_size}; }

    std::array<char, longest> m_masked{};
    qsizetype m_size = 0;
};
