#pragma once

#include "card/CardRecord.h"

#include <QString>

#include <optional>

/// What the main window says of the card before any was read.
inline constexpr QStringView summaryBeforeAnyCard{u"Aucune"};

/// The card in three lines: who, which number, how many beneficiaries. Empty when there is no card.
[[nodiscard]] QString cardSummary(const std::optional<CardRecord>& record);
