#pragma once

#include "card/CardRecord.h"
#include "platform/XmlDocument.h"

#include <cstddef>
#include <expected>

/// Several times the size of the largest family, and far below what would slow a page down.
inline constexpr std::size_t maximumBeneficiaries = 500;

/// The record of a card's XML document, values unchanged, without "FundCodeLibelle" and "XMLString", which the caller
/// adds. The internal error for a null document, the no-beneficiary error for one without beneficiaries, the general
/// error for one with more than maximumBeneficiaries. Any thread.
[[nodiscard]] std::expected<CardRecord, Error> parseCardDocument(const XmlDocument* document);
