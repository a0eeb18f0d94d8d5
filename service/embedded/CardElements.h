#pragma once

#include <QStringView>

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

namespace CardElements {

inline constexpr QStringView document{u"T_AsnDonneesVitale"};
inline constexpr QStringView serial{u"tech/numSerie"};
inline constexpr QStringView beneficiary{u"listeBenef/T_AsnBeneficiaire"};
// Family cards have room for nineteen. More than this is no family, and would take its time.
inline constexpr std::size_t mostBeneficiaries = 99;
inline constexpr QStringView period{u"ident/listePeriodesDroits/T_AsnPeriode"};
inline constexpr std::array periodParts{QStringView{u"debut"}, QStringView{u"fin"}};

inline constexpr QStringView quality{u"amo/qualBenef"};
inline constexpr QStringView insuredQuality{u"0"};
inline constexpr QStringView birthDate{u"ident/naissance/date"};
inline constexpr QStringView shortBirthDate{u"ident/naissance/dateEnCarte"};

inline constexpr QStringView birth{u"ident/naissance"};

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

inline constexpr std::array beneficiaryElements{
    CardElement{u"ident/nomUsuel", nameShape, CardNeed::Everyone},
    CardElement{u"ident/nomPatronymique", nameShape},
    CardElement{u"ident/prenomUsuel", nameShape, CardNeed::Everyone},
    // One of the two dates of the insured person must be there, which is looked at apart.
    CardElement{birthDate, digitsOf(8), CardNeed::Optional, true},
    CardElement{shortBirthDate, {0, 6, digits}, CardNeed::Optional, true},
    CardElement{u"ident/rangDeNaissance", digitsOf(1), CardNeed::Everyone},
    // A child often has no number of its own.
    CardElement{u"ident/nir", numberShape, CardNeed::Insured, true},
    CardElement{u"ident/nirCertifie", numberShape, CardNeed::Optional, true},
    CardElement{quality, qualityShape, CardNeed::Insured},
    CardElement{u"amo/codeRegime", digitsOf(2), CardNeed::Insured, true},
    CardElement{u"amo/caisse", digitsOf(3), CardNeed::Insured},
    CardElement{u"amo/centreCarte", digitsOf(4), CardNeed::Insured},
    CardElement{u"amo/codeGestion", {2, 2}, CardNeed::Insured},
    CardElement{u"amo/libelleExo", labelShape},
};

} // namespace CardElements
