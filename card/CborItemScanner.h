#pragma once

#include <QByteArrayView>

#include <optional>
#include <vector>

/// Finds where one CBOR item of a growing buffer ends, without decoding it: each byte is looked at once however slowly
/// the item arrives, and an item that is too large or nested too deep is told by its heads, before its content is
/// there.
class CborItemScanner
{
public:
    enum class Verdict
    {
        NeedsMore,
        Complete,
        Malformed,
        TooLarge
    };

    /// Levels of containers (and tags) that an item may have. A message needs three.
    static constexpr std::size_t maximumDepth = 16;

    explicit CborItemScanner(qsizetype maximumSize)
        : m_maximumSize(maximumSize)
    {
    }

    /// Goes on where the last call stopped. The bytes start at the item's first one each time.
    [[nodiscard]] Verdict scan(QByteArrayView bytes);

    /// The item's size in bytes, once it is complete.
    [[nodiscard]] qsizetype size() const { return m_position; }

private:
    struct Head;

    /// What an open container still lacks; nullopt when a break ends it.
    using Missing = std::optional<quint64>;

    static std::optional<Head> readHead(QByteArrayView bytes);
    Verdict enter(const Head& head);
    Verdict enterContainer(const Head& head);
    void finishItem();

    qsizetype m_maximumSize;
    qsizetype m_position = 0;
    std::vector<Missing> m_open;
    bool m_finished = false;
};
