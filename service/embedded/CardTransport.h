#pragma once

#include "service/embedded/CardFault.h"

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

    /// Sends a command APDU and blocks until the card has answered, which a mute card never does. An answer holds at
    /// least the two bytes of its status.
    [[nodiscard]] virtual std::expected<QByteArray, CardFault> transmit(QByteArrayView command) = 0;
};
