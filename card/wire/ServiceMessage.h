#pragma once

#include "card/wire/ServiceMessageScanner.h"

#include <QByteArray>
#include <QCborMap>
#include <QLatin1StringView>

#include <expected>
#include <optional>
#include <span>

/// A message between the application and the card service: a number and a body. Requests count from 1, a reply has its
/// request's number, an unsolicited message has 0. An absent body is null.
struct ServiceMessage
{
    qint64 number = 0;
    std::optional<QCborMap> body;
};

/// The message as CBOR: an array of two.
[[nodiscard]] QByteArray encodeServiceMessage(const ServiceMessage& message);

enum class FramingError
{
    Malformed,
    TooLarge
};

/// Splits a byte stream (a CBOR sequence) into messages. After a failure it keeps failing. One thread at a time.
class ServiceMessageReader
{
public:
    /// Bytes of a message; a larger one is refused as early as possible.
    static constexpr qsizetype maximumItemSize = qsizetype{4} * 1024 * 1024;

    /// Accepts only messages with these keys, or with any keys if the list is empty. The keys must outlive the reader.
    explicit ServiceMessageReader(std::span<const QLatin1StringView> keys = {})
        : m_keys(keys)
    {
    }

    void append(QByteArrayView bytes);

    /// The next complete message; nullopt when more bytes are needed.
    [[nodiscard]] std::expected<std::optional<ServiceMessage>, FramingError> next();

private:
    [[nodiscard]] QByteArrayView unread() const { return QByteArrayView(m_buffer).sliced(m_start); }
    std::unexpected<FramingError> fail(FramingError error);

    QByteArray m_buffer;
    qsizetype m_start = 0; // of the first message that was not returned
    std::span<const QLatin1StringView> m_keys;
    ServiceMessageScanner m_scanner{maximumItemSize, m_keys};
    std::optional<FramingError> m_failure;
};
