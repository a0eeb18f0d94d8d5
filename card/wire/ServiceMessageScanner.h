#pragma once

#include <QByteArrayView>
#include <QLatin1StringView>

#include <optional>
#include <span>
#include <vector>

/// Finds the end of a message in a growing buffer and checks its form without decoding it: a number, then null or a map
/// whose keys are texts and whose values are scalars or arrays of scalars. Each byte is looked at once. A message that
/// is too large or has another form is refused as soon as the head of an item shows that.
class ServiceMessageScanner
{
public:
    enum class Verdict
    {
        NeedsMore,
        Complete,
        Malformed,
        TooLarge
    };

    /// Items of a message (keys, values, array elements, parts of a string). A reply of our own service has about 20.
    static constexpr int maximumItems = 4096;
    /// Bytes of a key.
    static constexpr int maximumKey = 64;

    /// Accepts only these keys, or any if the list is empty. They must outlive the scanner.
    ServiceMessageScanner(qsizetype maximumSize, std::span<const QLatin1StringView> keys)
        : m_maximumSize(maximumSize)
        , m_keys(keys)
    {
    }

    /// Continues after the last call. The bytes always start at the message's first one.
    [[nodiscard]] Verdict scan(QByteArrayView bytes);

    /// The size of a complete message, in bytes.
    [[nodiscard]] qsizetype size() const { return m_position; }

private:
    struct Head;

    /// A container that has not ended.
    struct Level
    {
        enum class Kind
        {
            Message,
            Body,
            List,
            Parts // of a string of indefinite length
        };
        Kind kind = Kind::Message;
        unsigned majorType = 0;
        std::optional<quint64> total; // of items; nullopt when the length is indefinite
        quint64 entered = 0;
    };

    static std::optional<Head> readHead(QByteArrayView bytes);
    [[nodiscard]] bool expectsKey() const;
    [[nodiscard]] bool expects(const Head& head) const;
    [[nodiscard]] bool isKnown(QByteArrayView key) const;
    [[nodiscard]] Verdict judgeKey(const Head& head, QByteArrayView rest) const;
    Verdict enter(const Head& head);
    Verdict enterContainer(const Head& head);
    Verdict leaveContainer();
    void finishItem();

    qsizetype m_maximumSize;
    std::span<const QLatin1StringView> m_keys;
    qsizetype m_position = 0;
    int m_items = 0;
    std::vector<Level> m_open;
    bool m_finished = false;
};
