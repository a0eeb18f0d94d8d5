#pragma once

#include <QString>

#include <optional>

/// Insurance scheme (two digits) and fund (three digits) of a card's main beneficiary, if any.
struct CardCoverage
{
    QString scheme;
    QString fund;
};

/// The coverage in a card's text; empty values for another document. Absent when the text is not well-formed, has
/// declarations in its document type, or has more than 256 levels.
[[nodiscard]] std::optional<CardCoverage> cardCoverage(QStringView text);
