#include "card/CardParser.h"

#include "card/CardKeys.h"
#include "card/PelmoraError.h"
#include "support/MXLog.h"

#include <algorithm>

namespace {

constexpr std::string_view serialPath = "/T_AsnDonneesVitale/tech/numSerie";
constexpr std::string_view beneficiariesPath = "T_AsnDonneesVitale/listeBenef/T_AsnBeneficiaire";
constexpr std::string_view rightsPath = "ident/listePeriodesDroits/T_AsnPeriode";
constexpr QStringView insuredPersonQuality{u"0"};

BeneficiaryRecord parseBeneficiary(const XmlNode& element)
{
    BeneficiaryRecord beneficiary;
    for (const BeneficiaryField& field : beneficiaryFields) {
        if (const std::optional<XmlNode> node = element.firstNode(field.path))
            beneficiary.setText(field.key, node->stringValue());
    }
    // The array tells that the card lists periods; the periods themselves are not carried, so that nobody takes what
    // the card says for today's rights.
    if (element.firstNode(rightsPath))
        beneficiary.setRights({});
    return beneficiary;
}

const BeneficiaryRecord& mainBeneficiary(const QList<BeneficiaryRecord>& beneficiaries)
{
    const auto insured = std::ranges::find_if(beneficiaries, [](const BeneficiaryRecord& beneficiary) {
        return beneficiary.text(CardKey::quality) == insuredPersonQuality;
    });
    return insured == beneficiaries.cend() ? beneficiaries.first() : *insured;
}

} // namespace

std::expected<CardRecord, Error> parseCardDocument(const XmlDocument* document)
{
    if (document == nullptr)
        return std::unexpected(PelmoraError::internalError());

    // Counted before anything is made of them.
    const std::vector<XmlNode> elements = document->documentNode().nodes(beneficiariesPath);
    if (elements.empty())
        return std::unexpected(PelmoraError::vitaleNoBen());
    if (elements.size() > maximumBeneficiaries) {
        MXLog::logError("A card with {} beneficiaries was refused; {} are allowed", elements.size(),
                        maximumBeneficiaries);
        return std::unexpected(PelmoraError::generalError());
    }

    CardRecord record;
    const std::optional<XmlNode> serial = document->rootElement().firstNode(serialPath);
    if (serial && serial->hasChildren())
        record.setText(CardKey::vitaleSerial, serial->stringValue());

    QList<BeneficiaryRecord> beneficiaries;
    for (const XmlNode& element : elements)
        beneficiaries.append(parseBeneficiary(element));

    const BeneficiaryRecord& insured = mainBeneficiary(beneficiaries);
    for (const QStringView key : mainBeneficiaryKeys) {
        if (const std::optional<QString> value = insured.text(key))
            record.setText(key, *value);
    }
    record.setBeneficiaries(std::move(beneficiaries));
    return record;
}
