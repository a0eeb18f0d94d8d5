#pragma once

#include "card/wire/ServiceMessageScanner.h"

#include <QByteArray>
#include <QCborMap>
#include <QLatin1StringView>

#include <cstddef>
#include <expected>
#include <optional>
#include <span>

/// One item of the channel between the application and the card service: a number and a body. Requests count from 1, a
/// reply bears its request's number, 0 marks an unsolicited message. An absent body stands for null.
struct ServiceMessage
{
    qint64 number = 0;
    std::optional<QCborMap> body;
};

/// The item as CBOR: an array of two.
[[nodiscard]] QByteArray encodeServiceMessage(const ServiceMessage& message);

/// Why a stream can no longer be read.
enum class FramingError
{
    Malformed,
    TooLarge
};

/// Cuts a stream of bytes (a CBOR sequence) into messages. Once it has failed it stays failed. One thread at a time.
class ServiceMessageReader
{
public:
    /// Bytes that one item may take; a larger one is refused as soon as that can be told. The client's other limits are
    /// in ChannelLimits.h.
    static constexpr qsizetype maximumItemSize = qsizetype{4} * 1024 * 1024;

    /// Accepts messages with these keys alone, or with any if there are none. They must outlive the reader.
    explicit ServiceMessageReader(std::span<const QLatin1StringView> keys = {})
        : m_keys(keys)
    {
    }

    void append(QByteArrayView bytes);

    /// The next whole message; nullopt when more bytes are needed.
    [[nodiscard]] std::expected<std::optional<ServiceMessage>, FramingError> next();

private:
    [[nodiscard]] QByteArrayView unread() const { return QByteArrayView(m_buffer).sliced(m_start); }
    std::unexpected<FramingError> fail(FramingError error);

    QByteArray m_buffer;
    qsizetype m_start = 0; // of the first item that was not handed out
    std::span<const QLatin1StringView> m_keys;
    ServiceMessageScanner m_scanner{maximumItemSize, m_keys};
    std::optional<FramingError> m_failure;
};
