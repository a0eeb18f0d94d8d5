#include "service/embedded/CardFiles.h"

#include "service/embedded/CardMap.h"
#include "service/embedded/Tlv.h"

#include <algorithm>
#include <array>

namespace {

constexpr quint16 allIsWell = 0x9000;
constexpr quint16 endReachedEarly = 0x6282; // the data are valid
constexpr quint16 beyondTheEnd = 0x6B00;
constexpr qsizetype blockSize = 256;
// The largest offset of READ BINARY.
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

/// Also with a warning (62xx).
bool isSelected(quint16 status)
{
    return status == allIsWell || status >> 8U == 0x62;
}

/// The file size in the reply to SELECT, if any: object 80 in a template 62 or 6F.
std::optional<qsizetype> fileSize(QByteArrayView selectionReply)
{
    constexpr quint32 sizeTag = 0x80;
    constexpr quint32 controlParameters = 0x62;
    constexpr quint32 controlInformation = 0x6F;
    const auto objects = parseTlv(selectionReply);
    if (!objects)
        return std::nullopt;
    for (const TagPath& path : {TagPath{controlParameters, sizeTag}, TagPath{controlInformation, sizeTag},
                                TagPath{controlInformation, controlParameters, sizeTag}}) {
        for (const TlvObject* object : findTlv(*objects, path)) {
            if (object->value.isEmpty() || object->value.size() > qsizetype{sizeof(quint32)})
                continue;
            qsizetype size = 0;
            for (const char byte : object->value)
                size = size << 8U | static_cast<quint8>(byte);
            return size;
        }
    }
    return std::nullopt;
}

/// Whether a status means the end of the file. Cards use several. All but one also mean a refusal, so they count only
/// when the announced size was read.
bool isBeyondTheEnd(quint16 status, qsizetype offset, std::optional<qsizetype> size)
{
    constexpr std::array otherWays{quint16{0x6A82}, quint16{0x6A86}, quint16{0x6A87}, quint16{0x6700}};
    const bool isWhole = size == offset;
    if (status == beyondTheEnd)
        return offset > 0 || isWhole;
    return isWhole && std::ranges::find(otherWays, status) != otherWays.end();
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
    // Cards without applications answer in many ways.
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
    return readSelected(fileSize(reply->data));
}

std::expected<QByteArray, CardFault> CardFiles::readSelected(std::optional<qsizetype> size)
{
    QByteArray content;
    bool isAtEnd = false;
    while (!isAtEnd && content.size() < longestFile) {
        const std::expected<CardReply, CardFault> reply = m_channel->exchange(readCommand(content.size()));
        if (!reply)
            return std::unexpected(reply.error());
        if (reply->data.size() > blockSize)
            return std::unexpected(CardFault::CardNonsense);
        if (reply->status == allIsWell || reply->status == endReachedEarly) {
            // A short block is not the end: cards and readers have their own limits.
            content += reply->data;
            isAtEnd = reply->data.isEmpty() || reply->status == endReachedEarly;
        } else if (isBeyondTheEnd(reply->status, content.size(), size)) {
            isAtEnd = true;
        } else {
            return std::unexpected(CardFault::CardRefusal);
        }
    }
    if (!isAtEnd && size != content.size())
        return std::unexpected(CardFault::CardNonsense);
    if (size && *size != content.size())
        return std::unexpected(CardFault::CardFileCut);
    return content;
}
