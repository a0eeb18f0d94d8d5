#include "card/CardParser.h"

#include "card/CardKeys.h"
#include "card/PelmoraError.h"
#include "support/MXLog.h"

#include <algorithm>

namespace {

constexpr ElementPath serialPath = CardPath::document / CardPath::serial;
constexpr ElementPath beneficiariesPath = CardPath::document / CardPath::beneficiary;

BeneficiaryRecord parseBeneficiary(const XmlNode& element)
{
    BeneficiaryRecord beneficiary;
    for (const BeneficiaryField& field : beneficiaryFields) {
        if (const std::optional<XmlNode> node = element.firstNode(field.path.utf8()))
            beneficiary.setText(field.key, node->stringValue());
    }
    // An empty array means that the card lists periods. They are not shown as today's rights.
    if (element.firstNode(CardPath::period.utf8()))
        beneficiary.setRights({});
    return beneficiary;
}

const BeneficiaryRecord& mainBeneficiary(const QList<BeneficiaryRecord>& beneficiaries)
{
    const auto insured = std::ranges::find_if(beneficiaries, [](const BeneficiaryRecord& beneficiary) {
        return beneficiary.text(CardKey::quality) == insuredQuality;
    });
    return insured == beneficiaries.cend() ? beneficiaries.first() : *insured;
}

} // namespace

std::expected<CardRecord, Error> parseCardDocument(const XmlDocument* document)
{
    if (document == nullptr)
        return std::unexpected(PelmoraError::internalError());

    const std::vector<XmlNode> elements = document->documentNode().nodes(beneficiariesPath.utf8());
    if (elements.empty())
        return std::unexpected(PelmoraError::vitaleNoBen());
    if (elements.size() > maximumBeneficiaries) {
        MXLog::logError("A card with {} beneficiaries was refused; {} are allowed", elements.size(),
                        maximumBeneficiaries);
        return std::unexpected(PelmoraError::generalError());
    }

    CardRecord record;
    const std::optional<XmlNode> serial = document->documentNode().firstNode(serialPath.utf8());
    if (serial && serial->hasChildren())
        record.setText(CardKey::vitaleSerial, serial->stringValue());

    QList<BeneficiaryRecord> beneficiaries;
    for (const XmlNode& element : elements)
        beneficiaries.append(parseBeneficiary(element));

    const BeneficiaryRecord& insured = mainBeneficiary(beneficiaries);
    for (const RecordKey key : mainBeneficiaryKeys) {
        if (const std::optional<QString> value = insured.text(key))
            record.setText(key, *value);
    }
    record.setBeneficiaries(std::move(beneficiaries));
    return record;
}
