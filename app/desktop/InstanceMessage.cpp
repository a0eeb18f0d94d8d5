#include "app/desktop/InstanceMessage.h"

#include "platform/NativePath.h"

#include <QCborMap>
#include <QCborParserError>

#include <filesystem>
#include <system_error>

namespace {

constexpr QLatin1StringView requestKey{"Request"};
constexpr QLatin1StringView openRequest{"Open"};
constexpr QLatin1StringView reopenRequest{"Reopen"};
constexpr QLatin1StringView actionRequest{"Action"};
constexpr QLatin1StringView nameKey{"Name"};
constexpr QLatin1StringView pathKey{"Path"};
constexpr QLatin1StringView tokenKey{"ActivationToken"};

bool isAbsolutePath(const QString& path)
{
    return path.startsWith(u'/') && !path.contains(QChar::Null);
}

/// A UTF-8 path is sent as a text, any other as bytes.
QCborValue valueOf(const QString& path)
{
    const QByteArray bytes = bytesOfPath(path);
    return bytes.isValidUtf8() ? QCborValue(path) : QCborValue(bytes);
}

QString pathOf(const QCborValue& value)
{
    return value.isByteArray() ? pathFromBytes(value.toByteArray()) : value.toString();
}

} // namespace

InstanceMessage InstanceMessage::forCard(const std::optional<QString>& card)
{
    if (!card || card->startsWith(u'/'))
        return {.cardPath = card};
    // The path is not normalised: "folder/.." is another place when the folder is a link.
    std::error_code error;
    return {.cardPath = pathFromBytes(std::filesystem::current_path(error).native()) + u'/' + *card};
}

QByteArray InstanceMessage::encoded() const
{
    QCborMap map;
    if (cardPath) {
        map[requestKey] = QString(openRequest);
        map[pathKey] = valueOf(*cardPath);
    } else if (action) {
        map[requestKey] = QString(actionRequest);
        map[nameKey] = nameOf(*action).toString();
    } else
        map[requestKey] = QString(reopenRequest);
    if (activationToken)
        map[tokenKey] = *activationToken;
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

    QCborMap map = value.toMap();
    const QCborValue sentToken = map.take(tokenKey);
    const std::optional<QString> token = sentToken.isString() ? std::optional(sentToken.toString()) : std::nullopt;
    const QString request = map.value(requestKey).toString();
    if (request == reopenRequest && map.size() == 1)
        return InstanceMessage{std::nullopt, std::nullopt, token};
    if (request == actionRequest && map.size() == 2) {
        const std::optional<DesktopAction> action = desktopActionOf(map.value(nameKey).toString());
        return action ? std::optional(InstanceMessage{std::nullopt, action, token}) : std::nullopt;
    }
    const QString path = pathOf(map.value(pathKey));
    if (request == openRequest && map.size() == 2 && isAbsolutePath(path))
        return InstanceMessage{path, std::nullopt, token};
    return std::nullopt;
}
