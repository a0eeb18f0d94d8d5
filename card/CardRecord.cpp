#include "card/CardRecord.h"

#include "card/CardKeys.h"

#include <utility>

namespace {

// The keys are constants with static storage: the map refers to them instead of copying.
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

void PersonalRecord::setText(QStringView key, const QString& value)
{
    setValue(key, value);
}

bool PersonalRecord::contains(QStringView key) const
{
    return m_values.contains(mapKey(key));
}

void PersonalRecord::setValue(QStringView key, const QVariant& value)
{
    m_values.insert(mapKey(key), value);
}

std::optional<QVariantList> BeneficiaryRecord::rights() const
{
    const QVariant value = values().value(mapKey(CardKey::amoRights));
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
