#pragma once

#include "card/CardRecord.h"
#include "platform/XmlDocument.h"

#include <expected>

/// Turns a card's XML document into its record, values as the document holds them. The record lacks "FundCodeLibelle"
/// and "XMLString", which depend on where the document came from. Without a document: the internal error; without a
/// beneficiary: the no-beneficiary error. Any thread.
[[nodiscard]] std::expected<CardRecord, Error> parseCardDocument(const XmlDocument* document);
