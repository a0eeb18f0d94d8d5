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

/// An element of a beneficiary that a card can fill.
struct CardElement
{
    QStringView path; // from T_AsnBeneficiaire
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

inline constexpr std::array beneficiaryElements{
    CardElement{u"ident/nomUsuel", CardNeed::Everyone},
    CardElement{u"ident/nomPatronymique"},
    CardElement{u"ident/prenomUsuel", CardNeed::Everyone},
    // Either of the two dates will do, which is looked at apart.
    CardElement{birthDate, CardNeed::Optional, true},
    CardElement{shortBirthDate, CardNeed::Optional, true},
    CardElement{u"ident/rangDeNaissance", CardNeed::Everyone},
    // A child often has no number of its own.
    CardElement{u"ident/nir", CardNeed::Insured, true},
    CardElement{u"ident/nirCertifie", CardNeed::Optional, true},
    CardElement{quality, CardNeed::Insured},
    CardElement{u"amo/codeRegime", CardNeed::Insured, true},
    CardElement{u"amo/caisse", CardNeed::Insured},
    CardElement{u"amo/centreCarte", CardNeed::Insured},
    CardElement{u"amo/codeGestion", CardNeed::Insured},
    CardElement{u"amo/libelleExo"},
};

} // namespace CardElements
