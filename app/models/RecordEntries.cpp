#include "app/models/RecordEntries.h"

#include "card/CardKeys.h"

namespace {

QVariantMap textsOf(const PersonalRecord& record)
{
    QVariantMap texts;
    for (const QString& key : record.keys()) {
        if (const std::optional<QString> text = record.text(key))
            texts.insert(key, *text);
    }
    return texts;
}

} // namespace

QVariantMap entriesOfRecord(const CardRecord& record)
{
    QVariantList beneficiaries;
    for (const BeneficiaryRecord& beneficiary : record.beneficiaries()) {
        QVariantMap entries = textsOf(beneficiary);
        if (const std::optional<QVariantList> rights = beneficiary.rights())
            entries.insert(CardKey::amoRights.toString(), *rights);
        beneficiaries.append(entries);
    }
    QVariantMap entries = textsOf(record);
    entries.insert(CardKey::beneficiaries.toString(), beneficiaries);
    return entries;
}
