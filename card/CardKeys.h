#pragma once

#include <QString>

#include <algorithm>
#include <array>
#include <string_view>

/// The key of a value in a record. Made of a literal at compile time, so it never refers to freed memory.
class RecordKey
{
public:
    explicit consteval RecordKey(std::u16string_view name)
        : m_name(name)
    {
    }

    // NOLINTNEXTLINE(google-explicit-constructor): wherever a name is read, a key may stand.
    constexpr operator QStringView() const { return {m_name.data(), qsizetype(m_name.size())}; }
    /// Does not copy the literal.
    [[nodiscard]] QString toString() const
    {
        const QStringView name = *this;
        return QString::fromRawData(name.data(), name.size());
    }

    friend constexpr bool operator==(RecordKey, RecordKey) = default;

private:
    std::u16string_view m_name;
};

/// A path of element names joined by "/", in UTF-8 for the XML parser and in UTF-16 for the XML writer.
class ElementPath
{
public:
    explicit consteval ElementPath(std::string_view names) { append(names); }

    [[nodiscard]] constexpr std::string_view utf8() const { return {m_utf8.data(), m_size}; }
    [[nodiscard]] constexpr QStringView utf16() const { return {m_utf16.data(), qsizetype(m_size)}; }

    consteval ElementPath operator/(const ElementPath& below) const
    {
        ElementPath whole = *this;
        whole.append("/");
        whole.append(below.utf8());
        return whole;
    }

private:
    consteval void append(std::string_view ascii)
    {
        for (const char character : ascii) {
            m_utf8.at(m_size) = character;
            m_utf16.at(m_size++) = static_cast<char16_t>(character);
        }
    }

    std::array<char, 64> m_utf8{};
    std::array<char16_t, 64> m_utf16{};
    std::size_t m_size = 0;
};

/// Keys of the card record and of its beneficiaries.
namespace CardKey {
inline constexpr RecordKey vitaleSerial{u"VitaleSerial"};
inline constexpr RecordKey beneficiaries{u"Beneficiaries"};
inline constexpr RecordKey firstName{u"FirstName"};
inline constexpr RecordKey lastName{u"LastName"};
// The birth name, which only the debug copy shows.
inline constexpr RecordKey patronimicName{u"PatronimicName"};
inline constexpr RecordKey birthdayDate{u"BirthdayDate"};
inline constexpr RecordKey birthdayDateRaw{u"MVBirthdayDateRaw"};
inline constexpr RecordKey ssn{u"SSN"};
inline constexpr RecordKey rank{u"Rank"};
inline constexpr RecordKey certifiedSSN{u"CertifiedSSN"};
inline constexpr RecordKey quality{u"Quality"};
inline constexpr RecordKey regimeCode{u"RegimeCode"};
inline constexpr RecordKey fundCode{u"FundCode"};
inline constexpr RecordKey managementCenter{u"ManagementCenter"};
inline constexpr RecordKey managementCode{u"ManagementCode"};
inline constexpr RecordKey exonerationLabel{u"ExonerationLabel"};
inline constexpr RecordKey amoRights{u"AMORights"};
inline constexpr RecordKey amoRightBegin{u"AMORightBegin"};
inline constexpr RecordKey amoRightEnd{u"AMORightEnd"};
inline constexpr RecordKey fundCodeLibelle{u"FundCodeLibelle"};
inline constexpr RecordKey xmlString{u"XMLString"};
} // namespace CardKey

/// Paths in a card's document. These and beneficiaryFields are not inline: with the sanitizers, the address of an
/// inline variable is no constant.
namespace CardPath {
constexpr ElementPath document{"T_AsnDonneesVitale"};
// Relative to the document's element.
constexpr ElementPath serial{"tech/numSerie"};
constexpr ElementPath beneficiary{"listeBenef/T_AsnBeneficiaire"};
// Relative to a beneficiary's element.
constexpr ElementPath birth{"ident/naissance"};
constexpr ElementPath period{"ident/listePeriodesDroits/T_AsnPeriode"};
// Relative to a period's element.
constexpr ElementPath periodBegin{"debut"};
constexpr ElementPath periodEnd{"fin"};
} // namespace CardPath

/// A field of a beneficiary: its key in the record, and its path in the beneficiary's element.
struct BeneficiaryField
{
    consteval BeneficiaryField(RecordKey recordKey, std::string_view names)
        : key(recordKey)
        , path(names)
    {
    }

    RecordKey key;
    ElementPath path;
};

/// The fields that are copied from the card's XML unchanged.
constexpr std::array beneficiaryFields{
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

/// The path of the field with that key.
consteval QStringView pathOf(RecordKey key)
{
    return std::ranges::find(beneficiaryFields, key, &BeneficiaryField::key)->path.utf16();
}

/// The quality of the insured person.
inline constexpr QStringView insuredQuality{u"0"};

/// The values of the main beneficiary that the card record copies.
inline constexpr std::array mainBeneficiaryKeys{
    CardKey::ssn,      CardKey::lastName,         CardKey::firstName,      CardKey::regimeCode,
    CardKey::fundCode, CardKey::managementCenter, CardKey::managementCode,
};
