#include "card/client/ServiceReply.h"

#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "card/PelmoraError.h"
#include "card/client/MessageLogText.h"
#include "card/wire/ServiceVocabulary.h"
#include "card/wire/TextDecoding.h"

#include <QCborArray>
#include <QStringList>

namespace {

/// The card's document; nullopt when it is missing or in no known encoding.
std::optional<QString> cardText(const QCborMap& reply)
{
    const QCborValue value = reply.value(ServiceWord::vitale);
    if (value.isString())
        return value.toString();
    if (value.isByteArray())
        return decodeCardText(value.toByteArray());
    return std::nullopt;
}

} // namespace

std::optional<QString> decodeCardText(QByteArrayView bytes)
{
    for (const auto decode : {decodeUtf8, decodeLatin1, decodeWindows1252}) {
        if (std::optional<QString> text = decode(bytes))
            return text;
    }
    return std::nullopt;
}

std::optional<QString> replyText(const QCborMap& reply, QLatin1StringView key)
{
    const QCborValue value = reply.value(key);
    if (value.isByteArray())
        return decodeUtf8(value.toByteArray());
    if (!value.isString())
        return std::nullopt;
    return value.toString();
}

std::expected<void, Error> statusOf(const QCborMap& reply)
{
    if (replyText(reply, ServiceWord::status) != ServiceWord::success)
        return std::unexpected(PelmoraError::generalError());
    return {};
}

QString replyDetail(const QCborMap& reply)
{
    constexpr qsizetype longest = 300;
    return printableText(replyText(reply, ServiceWord::detail).value_or(QString()).left(longest));
}

std::expected<QVariantMap, Error> readersOf(const QCborMap& reply)
{
    if (const auto status = statusOf(reply); !status)
        return std::unexpected(status.error());
    const QCborValue field = reply.value(ServiceWord::readers);
    if (!field.isArray())
        return std::unexpected(PelmoraError::noReader());
    QStringList names;
    for (const QCborValue name : field.toArray()) {
        if (name.isString())
            names.append(name.toString());
    }
    QVariantMap readers{{ReaderKey::readers.toString(), names}};
    if (const QString detail = replyDetail(reply); !detail.isEmpty())
        readers.insert(ReaderKey::detail.toString(), detail);
    return readers;
}

std::expected<XmlDocument, Error> informationDocument(const QCborMap& reply)
{
    const std::optional<QString> text = replyText(reply, ServiceWord::informations);
    if (!statusOf(reply) || !text)
        return std::unexpected(PelmoraError::generalError());
    return XmlDocument::fromText(*text);
}

InformationTexts informationsOf(const XmlDocument& document)
{
    InformationTexts texts;
    for (std::size_t index = 0; index < texts.size(); ++index) {
        const std::optional<XmlNode> node = document.rootElement().firstNode(informationFields[index].path);
        if (node && node->hasChildren())
            texts[index] = node->stringValue().toStdU16String();
    }
    return texts;
}

QVariantMap informationsDictionary(const InformationTexts& texts)
{
    QVariantMap informations;
    for (std::size_t index = 0; index < texts.size(); ++index) {
        if (texts[index])
            informations.insert(informationFields[index].key.toString(), QString::fromStdU16String(*texts[index]));
    }
    return informations;
}

std::expected<CardRecord, Error> recordOf(const QCborMap& reply)
{
    if (!statusOf(reply)) {
        const qint64 code = reply.value(ServiceWord::result).toInteger();
        return std::unexpected(PelmoraError::errorForCode(code).withDetail(replyDetail(reply)));
    }
    const std::optional<QString> text = cardText(reply);
    if (!text)
        return std::unexpected(PelmoraError::generalError());
    const auto document = XmlDocument::fromText(*text);
    if (!document)
        return std::unexpected(document.error());
    auto record = parseCardDocument(&*document);
    if (!record)
        return record;
    if (const std::optional<QString> label = replyText(reply, ServiceWord::fundCodeLibelle))
        record->setText(CardKey::fundCodeLibelle, *label);
    record->setText(CardKey::xmlString, *text);
    return record;
}
