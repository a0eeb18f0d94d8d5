#include "card/ServiceReply.h"

#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "card/PelmoraError.h"
#include "card/ServiceVocabulary.h"

#include <QCborArray>
#include <QCborValue>
#include <QStringDecoder>
#include <QStringList>

#include <algorithm>
#include <array>

namespace {

// ISO Latin 1 has no characters from 0x80 to 0x9F; code page 1252 has these, and none where there is a zero.
constexpr unsigned char firstGap = 0x80;
constexpr std::array<char16_t, 32> codePage1252Gap{
    u'\u20AC', 0,         u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021', //
    u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', 0,         u'\u017D', 0,         //
    0,         u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014', //
    u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', 0,         u'\u017E', u'\u0178',
};

bool isInGap(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    return value >= firstGap && value < firstGap + codePage1252Gap.size();
}

std::optional<QString> fromUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

std::optional<QString> fromLatin1(QByteArrayView bytes)
{
    if (std::ranges::any_of(bytes, isInGap))
        return std::nullopt;
    return QString::fromLatin1(bytes);
}

std::optional<QString> fromCodePage1252(QByteArrayView bytes)
{
    QString text = QString::fromLatin1(bytes);
    for (qsizetype index = 0; index < bytes.size(); ++index) {
        if (!isInGap(bytes[index]))
            continue;
        const char16_t character = codePage1252Gap.at(static_cast<unsigned char>(bytes[index]) - firstGap);
        if (character == 0)
            return std::nullopt;
        text[index] = character;
    }
    return text;
}

/// The card's document as text; nullopt when the reply has none, or one in no known encoding.
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
    for (const auto decode : {fromUtf8, fromLatin1, fromCodePage1252}) {
        if (std::optional<QString> text = decode(bytes))
            return text;
    }
    return std::nullopt;
}

std::optional<QString> replyText(const QCborMap& reply, QLatin1StringView key)
{
    const QCborValue value = reply.value(key);
    if (value.isByteArray())
        return fromUtf8(value.toByteArray());
    if (!value.isString())
        return std::nullopt;
    return value.toString();
}

bool isSuccess(const QCborMap& reply)
{
    return replyText(reply, ServiceWord::status) == ServiceWord::success;
}

std::optional<QVariantMap> readersOf(const QCborMap& reply)
{
    const QCborValue field = reply.value(ServiceWord::readers);
    if (!field.isArray())
        return std::nullopt;
    QStringList names;
    for (const QCborValue name : field.toArray()) {
        if (name.isString())
            names.append(name.toString());
    }
    return QVariantMap{{ReaderKey::readers.toString(), names}};
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
