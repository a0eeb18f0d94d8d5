#pragma once

#include <QByteArrayView>
#include <QLatin1StringView>

#include <optional>
#include <span>
#include <vector>

/// Finds where one message of a growing buffer ends and judges its shape, without decoding it: the number, then null or
/// a map whose keys are texts and whose values are scalars or arrays of scalars. However slowly the message arrives, no
/// byte of its content is looked at twice; a message that is too large or of another shape is refused by its heads.
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

    /// Items (keys, values, elements of an array, parts of a string) that a message may have. A reply of our own
    /// service has about 20.
    static constexpr int maximumItems = 4096;
    /// Bytes of a key.
    static constexpr int maximumKey = 64;

    /// Accepts these keys alone, or any if there are none. They must outlive the scanner.
    ServiceMessageScanner(qsizetype maximumSize, std::span<const QLatin1StringView> keys)
        : m_maximumSize(maximumSize)
        , m_keys(keys)
    {
    }

    /// Goes on where the last call stopped. The bytes start at the message's first one each time.
    [[nodiscard]] Verdict scan(QByteArrayView bytes);

    /// The message's size in bytes, once it is complete.
    [[nodiscard]] qsizetype size() const { return m_position; }

private:
    struct Head;

    /// A container whose end has not come.
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
        std::optional<quint64> total; // of items; nullopt when a break ends it
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
