#pragma once

#include "service/pcsc/CardFault.h"

#include <QByteArray>

#include <expected>

/// The way to a card that is powered: one command at a time.
class CardTransport
{
public:
    CardTransport() = default;
    CardTransport(const CardTransport&) = delete;
    CardTransport& operator=(const CardTransport&) = delete;
    virtual ~CardTransport() = default;

    /// Sends a command APDU and blocks until the card has answered, which a mute card never does. The answer is as the
    /// card gave it, but never empty: it may lack its status.
    [[nodiscard]] virtual std::expected<QByteArray, CardFault> transmit(QByteArrayView command) = 0;
};
