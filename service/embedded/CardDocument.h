#pragma once

#include "service/embedded/CardMap.h"

/// The card's XML document, T_AsnDonneesVitale, of what was read of it. Fields that the card does not carry, and empty
/// ones, are left out; a card without what an attestation prints about its persons is refused.
[[nodiscard]] std::expected<QString, CardGap> cardDocument(const CardMap& map, const CardContent& content);
