#include "app/InstanceMessage.h"

#include <QCborMap>
#include <QCborParserError>
#include <QCborValue>
#include <QDir>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView requestKey{"Request"};
constexpr QLatin1StringView openRequest{"Open"};
constexpr QLatin1StringView reopenRequest{"Reopen"};
constexpr QLatin1StringView pathKey{"Path"};

bool isAbsolutePath(const QCborValue& value)
{
    return value.isString() && value.toString().startsWith(u'/') && !value.toString().contains(QChar::Null);
}

} // namespace

InstanceMessage InstanceMessage::forCard(const std::optional<QString>& card)
{
    if (!card || card->startsWith(u'/'))
        return {card};
    // The path is not tidied: "folder/.." is not the same place when the folder is a link.
    return {QDir::currentPath() + u'/' + *card};
}

QByteArray InstanceMessage::encoded() const
{
    QCborMap map;
    map[requestKey] = QString(cardPath ? openRequest : reopenRequest);
    if (cardPath)
        map[pathKey] = *cardPath;
    QByteArray bytes = map.toCborValue().toCbor();
    if (bytes.size() > maximumSize)
        bytes.clear();
    return bytes;
}

std::optional<InstanceMessage> InstanceMessage::decoded(QByteArrayView bytes)
{
    if (bytes.size() > maximumSize)
        return std::nullopt;
    const QByteArray copy = bytes.toByteArray();
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(copy, &error);
    if (error.error != QCborError::NoError || error.offset != copy.size() || !value.isMap())
        return std::nullopt;

    const QCborMap map = value.toMap();
    const QString request = map.value(requestKey).toString();
    if (request == reopenRequest && map.size() == 1)
        return InstanceMessage();
    if (request == openRequest && map.size() == 2 && isAbsolutePath(map.value(pathKey)))
        return InstanceMessage{map.value(pathKey).toString()};
    return std::nullopt;
}
