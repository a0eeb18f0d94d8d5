#pragma once

#include "card/CardRecord.h"
#include "card/client/CardServiceKeys.h"
#include "platform/Error.h"
#include "platform/XmlDocument.h"

#include <QByteArrayView>
#include <QCborMap>
#include <QString>
#include <QVariantMap>

#include <array>
#include <expected>
#include <optional>
#include <string>

// What the client reads in the card service's replies. Any thread.

/// The bytes as text, read in the encodings that health cards' documents come in: UTF-8, else ISO Latin 1, else the
/// Windows code page 1252. Each is read strictly; nullopt when none can be what the bytes are in.
[[nodiscard]] std::optional<QString> decodeCardText(QByteArrayView bytes);

/// The text under a key of a reply; a byte string counts when it is valid UTF-8. Absent when there is none.
[[nodiscard]] std::optional<QString> replyText(const QCborMap& reply, QLatin1StringView key);

/// Whether the service did what it was asked; the general error when it did not.
[[nodiscard]] std::expected<void, Error> statusOf(const QCborMap& reply);

/// What a reply has to say to people of a failure: one line, without control characters, of a length that an alert can
/// show. Empty when it says nothing.
[[nodiscard]] QString replyDetail(const QCborMap& reply);

/// The names of a "Readers" field, those of its elements that are texts, under ReaderKey::readers, and the reply's
/// detail, if any, under ReaderKey::detail. The general error when the service failed, the no-reader error when there
/// is no such field.
[[nodiscard]] std::expected<QVariantMap, Error> readersOf(const QCborMap& reply);

/// The document of an "Informations" field; the general error when the service failed or there is no such field, else
/// the error of whatever could not read it.
[[nodiscard]] std::expected<XmlDocument, Error> informationDocument(const QCborMap& reply);

/// The values of an information document, in the order of informationFields; what is missing or empty is absent.
using InformationTexts = std::array<std::optional<std::u16string>, informationFields.size()>;
[[nodiscard]] InformationTexts informationsOf(const XmlDocument& document);

/// The same as a dictionary with the keys of InformationKey.
[[nodiscard]] QVariantMap informationsDictionary(const InformationTexts& texts);

/// The record that a "vitale_read" gives: the error of the result code, with the reply's detail, when the service
/// failed; the general error without a document in a known encoding; else the error of whatever could not read it.
[[nodiscard]] std::expected<CardRecord, Error> recordOf(const QCborMap& reply);
