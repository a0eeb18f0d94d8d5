#pragma once

#include "card/CardKeys.h"

#include <array>
#include <cstddef>

/// When a beneficiary's element may lack.
enum class CardNeed
{
    Optional,
    Insured, // the insured person must have it: the attestation's head shows it
    Everyone // and so must every beneficiary: it stands in each line
};

/// How many characters an element's text has, and which ones. A text of another shape is damage: a longer one that was
/// cut to size would be somebody else's.
struct CardShape
{
    qsizetype shortest = 1;
    qsizetype longest = 1;
    QStringView characters = u""; // those that it is made of; empty: any
};

/// An element of a beneficiary that a card can fill.
struct CardElement
{
    QStringView path; // from T_AsnBeneficiaire
    CardShape shape;
    CardNeed need = CardNeed::Optional;
    bool zerosAreNothing = false; // zeros alone are what an unwritten card holds, and no value
};

// What points into the card's paths is not inline, as they are not.
namespace CardElements {

constexpr QStringView document = CardPath::document.utf16();
constexpr QStringView serial = CardPath::serial.utf16();
constexpr QStringView beneficiary = CardPath::beneficiary.utf16();
// Family cards have room for nineteen. More than this is no family, and would take its time.
inline constexpr std::size_t mostBeneficiaries = 99;
constexpr QStringView period = CardPath::period.utf16();
[[maybe_unused]] constexpr std::array periodParts{CardPath::periodBegin.utf16(), CardPath::periodEnd.utf16()};

constexpr QStringView quality = pathOf(CardKey::quality);
constexpr QStringView birth = CardPath::birth.utf16();
constexpr QStringView birthDate = pathOf(CardKey::birthdayDate);
constexpr QStringView shortBirthDate = pathOf(CardKey::birthdayDateRaw);

inline constexpr QStringView digits{u"0123456789"};
/// A number of as many digits, zeros in front included.
constexpr CardShape digitsOf(qsizetype count)
{
    return {count, count, digits};
}
// Cards have less room for either. What is longer would not go onto the page.
inline constexpr CardShape nameShape{1, 80};
inline constexpr CardShape labelShape{1, 200};
// With its key or without.
inline constexpr CardShape numberShape{13, 15};
// The insured person, relatives, husbands and wives past and present, children, others, widowed persons. 7 is not
// given.
inline constexpr CardShape qualityShape{1, 1, u"012345689"};

[[maybe_unused]] constexpr std::array beneficiaryElements{
    CardElement{pathOf(CardKey::lastName), nameShape, CardNeed::Everyone},
    CardElement{pathOf(CardKey::patronimicName), nameShape},
    CardElement{pathOf(CardKey::firstName), nameShape, CardNeed::Everyone},
    // One of the two dates of the insured person must be there, which is looked at apart.
    CardElement{birthDate, digitsOf(8), CardNeed::Optional, true},
    CardElement{shortBirthDate, {0, 6, digits}, CardNeed::Optional, true},
    CardElement{pathOf(CardKey::rank), digitsOf(1), CardNeed::Everyone},
    // A child often has no number of its own.
    CardElement{pathOf(CardKey::ssn), numberShape, CardNeed::Insured, true},
    CardElement{pathOf(CardKey::certifiedSSN), numberShape, CardNeed::Optional, true},
    CardElement{quality, qualityShape, CardNeed::Insured},
    CardElement{pathOf(CardKey::regimeCode), digitsOf(2), CardNeed::Insured, true},
    CardElement{pathOf(CardKey::fundCode), digitsOf(3), CardNeed::Insured},
    CardElement{pathOf(CardKey::managementCenter), digitsOf(4), CardNeed::Insured},
    CardElement{pathOf(CardKey::managementCode), {2, 2}, CardNeed::Insured},
    CardElement{pathOf(CardKey::exonerationLabel), labelShape},
};

} // namespace CardElements
