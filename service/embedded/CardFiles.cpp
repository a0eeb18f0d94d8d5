#include "service/embedded/CardFiles.h"

#include <array>
#include <utility>

namespace {

constexpr quint16 allIsWell = 0x9000;
constexpr quint16 endReachedEarly = 0x6282; // the data are good
constexpr quint16 beyondTheEnd = 0x6B00;
constexpr qsizetype blockSize = 256;
// Further on there is no offset to say.
constexpr qsizetype longestFile = 0x8000;

enum class SelectBy : char
{
    FileIdentifier = 0x02,
    ApplicationName = 0x04
};

QByteArray selectCommand(SelectBy method, QByteArrayView name)
{
    const std::array<char, 5> header{'\x00', '\xA4', static_cast<char>(method), '\x00', static_cast<char>(name.size())};
    return QByteArray(header.data(), header.size()).append(name);
}

std::array<char, 5> readCommand(qsizetype offset)
{
    return {'\x00', '\xB0', static_cast<char>(offset >> 8U), static_cast<char>(offset & 0xFFU), '\x00'};
}

/// Selected, be it with a warning (62xx).
bool isSelected(quint16 status)
{
    return status == allIsWell || status >> 8U == 0x62;
}

} // namespace

CardFiles::CardFiles(CardChannel& channel)
    : m_channel(&channel)
{
}

std::expected<bool, CardFault> CardFiles::selectApplication(const QByteArray& name)
{
    if (m_application == name)
        return true;
    m_application.clear();
    const std::expected<CardReply, CardFault> reply =
        m_channel->exchange(selectCommand(SelectBy::ApplicationName, name));
    if (!reply)
        return std::unexpected(reply.error());
    // Cards that know nothing of applications have many ways to say so.
    if (!isSelected(reply->status))
        return false;
    m_application = name;
    return true;
}

std::expected<QByteArray, CardFault> CardFiles::readFile(quint16 identifier)
{
    const std::array<char, 2> name{static_cast<char>(identifier >> 8U), static_cast<char>(identifier & 0xFFU)};
    const std::expected<CardReply, CardFault> reply =
        m_channel->exchange(selectCommand(SelectBy::FileIdentifier, name));
    if (!reply)
        return std::unexpected(reply.error());
    if (!isSelected(reply->status))
        return std::unexpected(CardFault::CardRefusal);
    return readSelected();
}

std::expected<QByteArray, CardFault> CardFiles::readSelected()
{
    QByteArray content;
    while (content.size() < longestFile) {
        const std::expected<CardReply, CardFault> reply = m_channel->exchange(readCommand(content.size()));
        if (!reply)
            return std::unexpected(reply.error());
        // A file whose last block is a whole one ends before the next.
        if (reply->status == beyondTheEnd && !content.isEmpty())
            return content;
        if (reply->status != allIsWell && reply->status != endReachedEarly)
            return std::unexpected(CardFault::CardRefusal);
        content += reply->data;
        if (reply->data.size() < blockSize || reply->status == endReachedEarly)
            return content;
    }
    return std::unexpected(CardFault::CardNonsense);
}
