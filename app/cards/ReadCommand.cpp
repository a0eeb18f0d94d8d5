#include "app/cards/ReadCommand.h"

#include "card/CardKeys.h"

using namespace Qt::StringLiterals;

namespace {

/// All texts of a record, under its own keys.
QJsonObject jsonOfTexts(const PersonalRecord& record)
{
    QJsonObject texts;
    for (const QString& key : record.keys()) {
        if (const std::optional<QString> text = record.text(key))
            texts[key] = *text;
    }
    return texts;
}

QJsonObject jsonOfRecord(const CardRecord& record)
{
    QJsonObject card = jsonOfTexts(record);
    // The whole document says the same again.
    card.remove(CardKey::xmlString.toString());
    QJsonArray beneficiaries;
    for (const BeneficiaryRecord& beneficiary : record.beneficiaries()) {
        QJsonObject person = jsonOfTexts(beneficiary);
        if (const std::optional<QVariantList> rights = beneficiary.rights())
            person[CardKey::amoRights.toString()] = QJsonArray::fromVariantList(*rights);
        beneficiaries.append(person);
    }
    card[CardKey::beneficiaries.toString()] = beneficiaries;
    return card;
}

} // namespace

std::expected<CardOutcome, Error> ReadCommand::handle(const CardSource& /*source*/, const CardRecord& record)
{
    return CardOutcome{{}, {{"record"_L1, jsonOfRecord(record)}}};
}
