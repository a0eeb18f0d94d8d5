#pragma once

#include "service/pcsc/CardTransport.h"

/// A card's reply to a command.
struct CardReply
{
    QByteArray data;
    quint16 status = 0; // both bytes; 0x9000 is success

    friend bool operator==(const CardReply&, const CardReply&) = default;
};

/// Exchanges commands and complete replies, for any protocol of the card: the rest of a T=0 reply is fetched, and a
/// command with a corrected length is sent again. The amount of a read is limited, for faulty or hostile cards.
class CardChannel
{
public:
    /// Sent commands, and received bytes. Reading a family card twice takes under 300 commands and 16 KiB.
    static constexpr int mostCommands = 2000;
    static constexpr qsizetype mostBytes = qsizetype{64} * 1024;

    /// The transport must outlive the channel.
    explicit CardChannel(CardTransport& transport);

    /// Sends a short command APDU. The reply's status is never 61xx, and 6Cxx only when the card repeats it. Over the
    /// limits nothing is sent, and the error is CardEndless.
    [[nodiscard]] std::expected<CardReply, CardFault> exchange(QByteArrayView command);

    /// Whether the card has answered anything.
    [[nodiscard]] bool hasAnswered() const { return m_hasAnswered; }

private:
    [[nodiscard]] std::expected<CardReply, CardFault> send(QByteArrayView command);
    [[nodiscard]] std::expected<CardReply, CardFault> fetchRest(CardReply reply);

    CardTransport* m_transport;
    int m_commands = 0;
    qsizetype m_bytes = 0;
    bool m_hasAnswered = false;
};
