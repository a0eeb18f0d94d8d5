#include "service/embedded/CardChannel.h"

#include <QtEndian>

#include <array>

namespace {

constexpr quint8 moreIsReady = 0x61;
constexpr quint8 lengthIsOther = 0x6C;
constexpr qsizetype statusSize = 2;
constexpr qsizetype headerSize = 4;

quint8 firstByte(quint16 status)
{
    return static_cast<quint8>(status >> 8U);
}

char secondByte(quint16 status)
{
    return static_cast<char>(status & 0xFFU);
}

/// Whether the command ends with an expected length.
bool expectsData(QByteArrayView command)
{
    if (command.size() <= headerSize)
        return false;
    const auto sent = static_cast<quint8>(command[headerSize]);
    return command.size() == headerSize + 1 || command.size() == headerSize + 1 + sent + 1;
}

} // namespace

CardChannel::CardChannel(CardTransport& transport)
    : m_transport(&transport)
{
}

std::expected<CardReply, CardFault> CardChannel::exchange(QByteArrayView command)
{
    std::expected<CardReply, CardFault> reply = send(command);
    if (reply && firstByte(reply->status) == lengthIsOther && expectsData(command)) {
        QByteArray corrected = command.toByteArray();
        corrected.back() = secondByte(reply->status);
        reply = send(corrected);
    }
    if (reply && firstByte(reply->status) == moreIsReady)
        return fetchRest(*std::move(reply));
    return reply;
}

std::expected<CardReply, CardFault> CardChannel::send(QByteArrayView command)
{
    if (m_commands == mostCommands)
        return std::unexpected(CardFault::CardEndless);
    ++m_commands;
    std::expected<QByteArray, CardFault> bytes = m_transport->transmit(command);
    if (!bytes)
        return std::unexpected(bytes.error());
    m_bytes += bytes->size();
    if (m_bytes > mostBytes)
        return std::unexpected(CardFault::CardEndless);
    if (bytes->size() < statusSize)
        return std::unexpected(CardFault::CardNonsense);
    m_hasAnswered = true;
    const qsizetype size = bytes->size() - statusSize;
    const auto status = qFromBigEndian<quint16>(bytes->constData() + size);
    bytes->truncate(size);
    return CardReply{.data = *std::move(bytes), .status = status};
}

std::expected<CardReply, CardFault> CardChannel::fetchRest(CardReply reply)
{
    while (firstByte(reply.status) == moreIsReady) {
        std::array<char, headerSize + 1> getResponse{'\x00', '\xC0', '\x00', '\x00', secondByte(reply.status)};
        std::expected<CardReply, CardFault> part = send(getResponse);
        if (part && firstByte(part->status) == lengthIsOther) {
            getResponse.back() = secondByte(part->status);
            part = send(getResponse);
        }
        if (!part)
            return part;
        // A card that always announces more without giving it would be read forever.
        if (firstByte(part->status) == moreIsReady && part->data.isEmpty())
            return std::unexpected(CardFault::CardNonsense);
        reply.data += part->data;
        reply.status = part->status;
    }
    return reply;
}
