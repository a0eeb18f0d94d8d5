#pragma once

#include "service/pcsc/CardTransport.h"

/// What a card says to a command.
struct CardReply
{
    QByteArray data;
    quint16 status = 0; // both bytes, 0x9000 when all is well

    friend bool operator==(const CardReply&, const CardReply&) = default;
};

/// Commands and whole replies, whatever the card's protocol: what a T=0 card keeps ready is fetched, and a length that
/// it corrects is followed. What one read may ask of a card is limited: a hostile one has no end.
class CardChannel
{
public:
    /// Commands that are sent, and bytes of replies that are taken. A family card read twice takes under 300 and 16
    /// KiB.
    static constexpr int mostCommands = 2000;
    static constexpr qsizetype mostBytes = qsizetype{64} * 1024;

    /// The transport outlives the channel.
    explicit CardChannel(CardTransport& transport);

    /// Sends a short command APDU. The reply's status is never 61xx; it is 6Cxx only when the card keeps to it. Beyond
    /// the limits nothing is sent any more, and the error is CardEndless.
    [[nodiscard]] std::expected<CardReply, CardFault> exchange(QByteArrayView command);

    /// Whether the card has ever answered.
    [[nodiscard]] bool hasAnswered() const { return m_hasAnswered; }

private:
    [[nodiscard]] std::expected<CardReply, CardFault> send(QByteArrayView command);
    [[nodiscard]] std::expected<CardReply, CardFault> fetchRest(CardReply reply);

    CardTransport* m_transport;
    int m_commands = 0;
    qsizetype m_bytes = 0;
    bool m_hasAnswered = false;
};
