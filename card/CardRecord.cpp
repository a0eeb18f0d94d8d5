#include "card/CardRecord.h"

#include <utility>

namespace {

// For a lookup only: the text is not copied.
QString mapKey(QStringView key)
{
    return QString::fromRawData(key.data(), key.size());
}

} // namespace

std::optional<QString> PersonalRecord::text(QStringView key) const
{
    const auto found = m_values.constFind(mapKey(key));
    if (found == m_values.cend() || found->typeId() != QMetaType::QString)
        return std::nullopt;
    return found->toString();
}

void PersonalRecord::setText(RecordKey key, const QString& value)
{
    setValue(key, value);
}

bool PersonalRecord::contains(QStringView key) const
{
    return m_values.contains(mapKey(key));
}

void PersonalRecord::setValue(RecordKey key, const QVariant& value)
{
    m_values.insert(key.toString(), value);
}

std::optional<QVariantList> BeneficiaryRecord::rights() const
{
    const QVariant value = values().value(CardKey::amoRights.toString());
    if (!value.isValid())
        return std::nullopt;
    return value.toList();
}

void BeneficiaryRecord::setRights(const QVariantList& rights)
{
    setValue(CardKey::amoRights, rights);
}

void CardRecord::setBeneficiaries(QList<BeneficiaryRecord> beneficiaries)
{
    m_beneficiaries = std::move(beneficiaries);
}
