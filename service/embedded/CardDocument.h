#pragma once

#include "service/embedded/CardMap.h"

/// The card's XML document, T_AsnDonneesVitale. Missing and empty fields are left out. An error when values that the
/// attestation needs are missing.
[[nodiscard]] std::expected<QString, CardGap> cardDocument(const CardMap& map, const CardContent& content);
