#pragma once

#include "card/CardRecord.h"
#include "card/client/CardServiceKeys.h"
#include "platform/Error.h"
#include "platform/XmlDocument.h"

#include <QCborMap>
#include <QVariantMap>

#include <array>
#include <expected>
#include <optional>

// Reads the card service's replies. Any thread.

/// Decodes a card's document strictly as UTF-8, ISO Latin 1 or windows-1252, the first one that fits.
[[nodiscard]] std::optional<QString> decodeCardText(QByteArrayView bytes);

/// The text under a key; a byte string counts when it is valid UTF-8.
[[nodiscard]] std::optional<QString> replyText(const QCborMap& reply, QLatin1StringView key);

/// The general error unless the reply's status is success.
[[nodiscard]] std::expected<void, Error> statusOf(const QCborMap& reply);

/// The reply's text for users about a failure, without control characters and not too long. May be empty.
[[nodiscard]] QString replyDetail(const QCborMap& reply);

/// The texts of the "Readers" field under ReaderKey::readers, and the reply's detail, if any, under ReaderKey::detail.
/// The general error when the service failed, the no-reader error without such a field.
[[nodiscard]] std::expected<QVariantMap, Error> readersOf(const QCborMap& reply);

/// The document of the "Informations" field; the general error without one, else the parser's error.
[[nodiscard]] std::expected<XmlDocument, Error> informationDocument(const QCborMap& reply);

/// The values of an information document in the order of informationFields; missing and empty ones are absent.
using InformationTexts = std::array<std::optional<std::u16string>, informationFields.size()>;
[[nodiscard]] InformationTexts informationsOf(const XmlDocument& document);

/// The same as a dictionary with the keys of InformationKey.
[[nodiscard]] QVariantMap informationsDictionary(const InformationTexts& texts);

/// The record of a "vitale_read" reply. The error of the result code, with the reply's detail, when the service failed;
/// the general error without a document in a known encoding; else the parser's error.
[[nodiscard]] std::expected<CardRecord, Error> recordOf(const QCborMap& reply);
