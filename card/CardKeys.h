#pragma once

#include <QStringView>

#include <array>
#include <string_view>

/// Keys of the card record and of its beneficiaries: the one spelling of each.
namespace CardKey {
inline constexpr QStringView vitaleSerial{u"VitaleSerial"};
inline constexpr QStringView beneficiaries{u"Beneficiaries"};
inline constexpr QStringView firstName{u"FirstName"};
inline constexpr QStringView lastName{u"LastName"};
inline constexpr QStringView patronimicName{u"PatronimicName"};
inline constexpr QStringView birthdayDate{u"BirthdayDate"};
inline constexpr QStringView birthdayDateRaw{u"MVBirthdayDateRaw"};
inline constexpr QStringView ssn{u"SSN"};
inline constexpr QStringView rank{u"Rank"};
inline constexpr QStringView certifiedSSN{u"CertifiedSSN"};
inline constexpr QStringView quality{u"Quality"};
inline constexpr QStringView regimeCode{u"RegimeCode"};
inline constexpr QStringView fundCode{u"FundCode"};
inline constexpr QStringView managementCenter{u"ManagementCenter"};
inline constexpr QStringView managementCode{u"ManagementCode"};
inline constexpr QStringView exonerationLabel{u"ExonerationLabel"};
inline constexpr QStringView amoRights{u"AMORights"};
inline constexpr QStringView amoRightBegin{u"AMORightBegin"};
inline constexpr QStringView amoRightEnd{u"AMORightEnd"};
inline constexpr QStringView fundCodeLibelle{u"FundCodeLibelle"};
inline constexpr QStringView xmlString{u"XMLString"};
} // namespace CardKey

/// A field of a beneficiary: its key in the record and its path from the T_AsnBeneficiaire element.
struct BeneficiaryField
{
    QStringView key;
    std::string_view path;
};

/// Every field that is copied from the card's XML as it stands.
inline constexpr std::array beneficiaryFields{
    BeneficiaryField{CardKey::lastName, "ident/nomUsuel"},
    BeneficiaryField{CardKey::patronimicName, "ident/nomPatronymique"},
    BeneficiaryField{CardKey::firstName, "ident/prenomUsuel"},
    BeneficiaryField{CardKey::birthdayDate, "ident/naissance/date"},
    BeneficiaryField{CardKey::birthdayDateRaw, "ident/naissance/dateEnCarte"},
    BeneficiaryField{CardKey::rank, "ident/rangDeNaissance"},
    BeneficiaryField{CardKey::ssn, "ident/nir"},
    BeneficiaryField{CardKey::certifiedSSN, "ident/nirCertifie"},
    BeneficiaryField{CardKey::quality, "amo/qualBenef"},
    BeneficiaryField{CardKey::regimeCode, "amo/codeRegime"},
    BeneficiaryField{CardKey::fundCode, "amo/caisse"},
    BeneficiaryField{CardKey::managementCenter, "amo/centreCarte"},
    BeneficiaryField{CardKey::managementCode, "amo/codeGestion"},
    BeneficiaryField{CardKey::exonerationLabel, "amo/libelleExo"},
};

/// What the card record copies from its main beneficiary.
inline constexpr std::array mainBeneficiaryKeys{
    CardKey::ssn,      CardKey::lastName,         CardKey::firstName,      CardKey::regimeCode,
    CardKey::fundCode, CardKey::managementCenter, CardKey::managementCode,
};
