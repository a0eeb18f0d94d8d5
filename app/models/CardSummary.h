#pragma once

#include "card/CardRecord.h"

#include <QString>

#include <optional>

/// The summary before any card was read.
inline constexpr QStringView summaryBeforeAnyCard{u"Aucune"};

/// Three lines: name, number, count of beneficiaries. Empty without a card.
[[nodiscard]] QString cardSummary(const std::optional<CardRecord>& record);
