#pragma once

#include "service/pcsc/CardFault.h"

#include <QByteArray>

#include <expected>

/// A connection to a powered card: one command at a time.
class CardTransport
{
public:
    CardTransport() = default;
    Q_DISABLE_COPY(CardTransport)
    virtual ~CardTransport() = default;

    /// Sends a command APDU and waits for the answer, which is never empty, but may have no status.
    [[nodiscard]] virtual std::expected<QByteArray, CardFault> transmit(QByteArrayView command) = 0;
};
