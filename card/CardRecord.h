#pragma once

#include "card/CardKeys.h"

#include <QDebug>
#include <QList>
#include <QVariantMap>

#include <optional>

/// A dictionary of texts about a person, with the keys of CardKeys.h. It cannot be printed, on purpose, so that
/// patients' data cannot reach a log by accident.
class PersonalRecord
{
public:
    /// Absent (never an empty text in its place) when the card does not have the value.
    [[nodiscard]] std::optional<QString> text(QStringView key) const;
    void setText(RecordKey key, const QString& value);

    [[nodiscard]] bool contains(QStringView key) const;
    [[nodiscard]] QStringList keys() const { return m_values.keys(); }

    friend bool operator==(const PersonalRecord&, const PersonalRecord&) = default;
    friend QDebug operator<<(QDebug, const PersonalRecord&) = delete;

protected:
    // Only the derived records are made, copied and destroyed.
    PersonalRecord() = default;
    ~PersonalRecord() = default;
    PersonalRecord(const PersonalRecord&) = default;
    PersonalRecord(PersonalRecord&&) = default;
    PersonalRecord& operator=(const PersonalRecord&) = default;
    PersonalRecord& operator=(PersonalRecord&&) = default;

    [[nodiscard]] const QVariantMap& values() const { return m_values; }
    void setValue(RecordKey key, const QVariant& value);

private:
    QVariantMap m_values;
};

class BeneficiaryRecord final : public PersonalRecord
{
public:
    /// Absent for a person without rights periods, else an empty array.
    [[nodiscard]] std::optional<QVariantList> rights() const;
    void setRights(const QVariantList& rights);
};

/// A card: its serial number, its beneficiaries in order, and the main beneficiary's identity and coverage.
class CardRecord final : public PersonalRecord
{
public:
    [[nodiscard]] const QList<BeneficiaryRecord>& beneficiaries() const { return m_beneficiaries; }
    void setBeneficiaries(QList<BeneficiaryRecord> beneficiaries);

    friend bool operator==(const CardRecord&, const CardRecord&) = default;

private:
    QList<BeneficiaryRecord> m_beneficiaries;
};
