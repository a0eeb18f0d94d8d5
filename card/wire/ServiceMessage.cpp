#include "card/wire/ServiceMessage.h"

#include <QCborArray>
#include <QCborStreamReader>

namespace {

/// Decodes a message that the scanner has checked; nullopt for invalid UTF-8 or an invalid simple value.
std::optional<ServiceMessage> decodeItem(QByteArrayView item)
{
    QCborStreamReader reader(item.data(), item.size());
    const QCborArray pair = QCborValue::fromCbor(reader).toArray();
    if (reader.lastError() != QCborError::NoError)
        return std::nullopt;
    const QCborValue body = pair[1];
    return ServiceMessage{.number = pair[0].toInteger(),
                          .body = body.isMap() ? std::optional(body.toMap()) : std::nullopt};
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
    m_buffer.remove(0, m_start);
    m_start = 0;
    m_buffer.append(bytes);
}

std::expected<std::optional<ServiceMessage>, FramingError> ServiceMessageReader::next()
{
    if (m_failure)
        return std::unexpected(*m_failure);
    const QByteArrayView bytes = unread();
    if (bytes.isEmpty())
        return std::nullopt;
    switch (m_scanner.scan(bytes)) {
    case ServiceMessageScanner::Verdict::NeedsMore:
        return std::nullopt;
    case ServiceMessageScanner::Verdict::Malformed:
        return fail(FramingError::Malformed);
    case ServiceMessageScanner::Verdict::TooLarge:
        return fail(FramingError::TooLarge);
    case ServiceMessageScanner::Verdict::Complete:
        break;
    }
    std::optional<ServiceMessage> message = decodeItem(bytes.first(m_scanner.size()));
    if (!message)
        return fail(FramingError::Malformed);
    m_start += m_scanner.size();
    m_scanner = ServiceMessageScanner(maximumItemSize, m_keys);
    return message;
}

std::unexpected<FramingError> ServiceMessageReader::fail(FramingError error)
{
    m_failure = error;
    m_buffer = {};
    m_start = 0;
    return std::unexpected(error);
}
