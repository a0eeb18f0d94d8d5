#pragma once

#include "card/CardRecord.h"
#include "platform/XmlDocument.h"

#include <cstddef>
#include <expected>

/// Beneficiaries that a card may have, several times what the largest family has and far from what slows a page down.
inline constexpr std::size_t maximumBeneficiaries = 500;

/// Turns a card's XML document into its record, values as the document holds them. The record lacks "FundCodeLibelle"
/// and "XMLString", which depend on where the document came from. Without a document: the internal error; without a
/// beneficiary: the no-beneficiary error; with more than maximumBeneficiaries: the general error. Any thread.
[[nodiscard]] std::expected<CardRecord, Error> parseCardDocument(const XmlDocument* document);
