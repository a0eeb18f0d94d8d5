#pragma once

#include <QString>

#include <optional>

/// Insurance scheme and fund of a card's main beneficiary: the two digits and the three digits that the card carries,
/// each empty when it carries none.
struct CardCoverage
{
    QString scheme;
    QString fund;
};

/// The coverage that a decoded card text shows; empty values for a document that is not a card's. Nothing when the text
/// is not well-formed, has a document type declaration or is nested over 256 levels deep.
[[nodiscard]] std::optional<CardCoverage> cardCoverage(QStringView text);
