#include "card/ServiceMessage.h"

#include <QCborArray>
#include <QCborStreamReader>
#include <QCborValue>

namespace {

// Bytes that were handed out are dropped from the front of the buffer once they are this many (or all that it holds),
// so that a burst of small messages does not move the rest of the buffer for each of them.
constexpr qsizetype compactionThreshold = qsizetype{64} * 1024;

/// Whether an item can be a message, by its first byte: an array of two, its length in any of the forms that CBOR has.
bool canBeginMessage(QByteArrayView bytes)
{
    constexpr unsigned arrayOfTwo = 0x82;
    constexpr unsigned arrayWithFollowingLength = 0x98;
    constexpr unsigned indefiniteArray = 0x9F;
    const auto first = static_cast<unsigned char>(bytes.front());
    return first == arrayOfTwo || (first >= arrayWithFollowingLength && first <= indefiniteArray);
}

/// A whole item as a message; nullopt when it is anything else.
std::optional<ServiceMessage> decodeItem(QByteArrayView item)
{
    QCborStreamReader reader(item.data(), item.size());
    const QCborValue value = QCborValue::fromCbor(reader);
    if (reader.lastError() != QCborError::NoError || reader.currentOffset() != item.size() || !value.isArray())
        return std::nullopt;

    const QCborArray pair = value.toArray();
    if (pair.size() != 2 || !pair[0].isInteger() || pair[0].toInteger() < 0)
        return std::nullopt;
    const QCborValue body = pair[1];
    if (body.isNull())
        return ServiceMessage{.number = pair[0].toInteger(), .body = std::nullopt};
    if (!body.isMap())
        return std::nullopt;
    return ServiceMessage{.number = pair[0].toInteger(), .body = body.toMap()};
}

} // namespace

QByteArray encodeServiceMessage(const ServiceMessage& message)
{
    const QCborValue body = message.body ? QCborValue(*message.body) : QCborValue(QCborValue::Null);
    return QCborValue(QCborArray{message.number, body}).toCbor();
}

void ServiceMessageReader::append(QByteArrayView bytes)
{
    if (m_failure)
        return;
    if (m_start == m_buffer.size() || m_start >= compactionThreshold) {
        m_buffer.remove(0, m_start);
        m_start = 0;
    }
    m_buffer.append(bytes);
}

std::expected<std::optional<ServiceMessage>, FramingError> ServiceMessageReader::next()
{
    if (m_failure)
        return std::unexpected(*m_failure);
    const QByteArrayView bytes = unread();
    if (bytes.isEmpty())
        return std::nullopt;
    if (!canBeginMessage(bytes))
        return fail(FramingError::Malformed);

    switch (m_scanner.scan(bytes)) {
    case CborItemScanner::Verdict::NeedsMore:
        return std::nullopt;
    case CborItemScanner::Verdict::Malformed:
        return fail(FramingError::Malformed);
    case CborItemScanner::Verdict::TooLarge:
        return fail(FramingError::TooLarge);
    case CborItemScanner::Verdict::Complete:
        break;
    }
    std::optional<ServiceMessage> message = decodeItem(bytes.first(m_scanner.size()));
    if (!message)
        return fail(FramingError::Malformed);
    m_start += m_scanner.size();
    m_scanner = CborItemScanner(maximumItemSize);
    return message;
}

std::unexpected<FramingError> ServiceMessageReader::fail(FramingError error)
{
    m_failure = error;
    m_buffer = {};
    m_start = 0;
    return std::unexpected(error);
}
