#pragma once

#include "service/embedded/CardTransport.h"

/// What a card says to a command.
struct CardReply
{
    QByteArray data;
    quint16 status = 0; // both bytes, 0x9000 when all is well

    friend bool operator==(const CardReply&, const CardReply&) = default;
};

/// Commands and whole replies, whatever the card's protocol: what a T=0 card keeps ready is fetched, and a length that
/// it corrects is followed.
class CardChannel
{
public:
    /// The transport outlives the channel.
    explicit CardChannel(CardTransport& transport);

    /// Sends a short command APDU. The reply's status is never 61xx; it is 6Cxx only when the card keeps to it.
    [[nodiscard]] std::expected<CardReply, CardFault> exchange(QByteArrayView command);

    /// Whether the card has ever answered.
    [[nodiscard]] bool hasAnswered() const { return m_hasAnswered; }

private:
    [[nodiscard]] std::expected<CardReply, CardFault> send(QByteArrayView command);
    [[nodiscard]] std::expected<CardReply, CardFault> fetchRest(CardReply reply);

    CardTransport* m_transport;
    bool m_hasAnswered = false;
};
