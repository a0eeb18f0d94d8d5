#pragma once

#include "service/check/CheckReport.h"
#include "service/embedded/CardContent.h"

#include <expected>
#include <optional>

/// A card's files, recorded as FOLDER/APPLICATION/FILE with names in hexadecimal digits.
struct RecordedCard
{
    QList<QByteArray> applications;
    CardContent files;
};

/// The card in a folder. The error is in French.
[[nodiscard]] std::expected<RecordedCard, QString> readRecordedCard(const QString& folder);

/// Checks a card map's data file, and reads the card with it if there is one. The report has no value of the card.
[[nodiscard]] CheckReport checkCardMap(const QByteArray& json, const std::optional<RecordedCard>& card);
