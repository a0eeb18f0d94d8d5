#pragma once

#include "card/CardKeys.h"

#include <QDebug>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <optional>

/// A dictionary of texts about a person, with the keys of CardKeys.h. It has no printer of any kind, on purpose:
/// patients' data cannot reach a log by accident.
class PersonalRecord
{
public:
    /// The value of a key of CardKeys.h; absent (never an empty placeholder) when the card does not carry it.
    [[nodiscard]] std::optional<QString> text(QStringView key) const;
    void setText(RecordKey key, const QString& value);

    [[nodiscard]] bool contains(QStringView key) const;
    [[nodiscard]] QStringList keys() const { return m_values.keys(); }

    friend bool operator==(const PersonalRecord&, const PersonalRecord&) = default;
    friend QDebug operator<<(QDebug, const PersonalRecord&) = delete;

protected:
    // Only whole records are made and destroyed, never this part of one.
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

/// One person of a card.
class BeneficiaryRecord final : public PersonalRecord
{
public:
    /// The rights periods: absent for a person without any, otherwise an array that is kept empty.
    [[nodiscard]] std::optional<QVariantList> rights() const;
    void setRights(const QVariantList& rights);
};

/// What was read of one card: its serial number, its beneficiaries in the card's order and, at the top level, a copy of
/// the main beneficiary's identity and coverage.
class CardRecord final : public PersonalRecord
{
public:
    [[nodiscard]] const QList<BeneficiaryRecord>& beneficiaries() const { return m_beneficiaries; }
    void setBeneficiaries(QList<BeneficiaryRecord> beneficiaries);

    friend bool operator==(const CardRecord&, const CardRecord&) = default;

private:
    QList<BeneficiaryRecord> m_beneficiaries;
};
