#pragma once

#include "card/CardKeys.h"

#include <array>
#include <cstddef>

/// Which beneficiaries must have an element.
enum class CardNeed
{
    Optional,
    Insured, // the insured person, for the attestation's head
    Everyone // every beneficiary, for each line
};

/// Length and characters of an element's text. Other texts are damage and are never cut to size.
struct CardShape
{
    qsizetype shortest = 1;
    qsizetype longest = 1;
    QStringView characters = u""; // allowed characters; empty: any
};

struct CardElement
{
    QStringView path; // from T_AsnBeneficiaire
    CardShape shape;
    CardNeed need = CardNeed::Optional;
    bool zerosAreNothing = false; // only zeros mean an unwritten value
};

// Not inline, for the same reason as in CardKeys.h.
namespace CardElements {

constexpr QStringView document = CardPath::document.utf16();
constexpr QStringView serial = CardPath::serial.utf16();
constexpr QStringView beneficiary = CardPath::beneficiary.utf16();
// Family cards have room for 19. Reading many more would take long.
inline constexpr std::size_t mostBeneficiaries = 99;
constexpr QStringView period = CardPath::period.utf16();
[[maybe_unused]] constexpr std::array periodParts{CardPath::periodBegin.utf16(), CardPath::periodEnd.utf16()};

constexpr QStringView quality = pathOf(CardKey::quality);
constexpr QStringView birth = CardPath::birth.utf16();
constexpr QStringView birthDate = pathOf(CardKey::birthdayDate);
constexpr QStringView shortBirthDate = pathOf(CardKey::birthdayDateRaw);

inline constexpr QStringView digits{u"0123456789"};
/// A number with leading zeros.
constexpr CardShape digitsOf(qsizetype count)
{
    return {count, count, digits};
}
// Longer than on any card; longer texts do not fit on the page.
inline constexpr CardShape nameShape{1, 80};
inline constexpr CardShape labelShape{1, 200};
// With or without its key.
inline constexpr CardShape numberShape{13, 15};
// Insured person, relatives, current and former spouses, children, others, widowed persons. 7 is not used.
inline constexpr CardShape qualityShape{1, 1, u"012345689"};

[[maybe_unused]] constexpr std::array beneficiaryElements{
    CardElement{pathOf(CardKey::lastName), nameShape, CardNeed::Everyone},
    CardElement{pathOf(CardKey::patronimicName), nameShape},
    CardElement{pathOf(CardKey::firstName), nameShape, CardNeed::Everyone},
    // The insured person needs one of the two dates, which missingElements() checks.
    CardElement{birthDate, digitsOf(8), CardNeed::Optional, true},
    CardElement{shortBirthDate, {0, 6, digits}, CardNeed::Optional, true},
    CardElement{pathOf(CardKey::rank), digitsOf(1), CardNeed::Everyone},
    // Children often have no number.
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
