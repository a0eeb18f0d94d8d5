#pragma once

#include <QString>

#include <array>
#include <optional>

/// Insurance scheme and fund of a card's main beneficiary: the two digits and the three digits that the card carries,
/// each empty when it carries none.
struct CardCoverage
{
    QString scheme;
    QString fund;
};

/// Where the coverage is found in a card's XML: a beneficiary from the document, the rest from the beneficiary.
namespace CardPath {
inline constexpr QStringView beneficiary{u"T_AsnDonneesVitale/listeBenef/T_AsnBeneficiaire"};
inline constexpr QStringView quality{u"amo/qualBenef"};
inline constexpr QStringView scheme{u"amo/codeRegime"};
inline constexpr QStringView fund{u"amo/caisse"};
} // namespace CardPath

/// The coverage that a decoded card text shows; empty values for a document that is not a card's. Nothing when the text
/// is not well-formed, has a document type declaration or is nested over 256 levels deep.
[[nodiscard]] std::optional<CardCoverage> cardCoverage(QStringView text);
