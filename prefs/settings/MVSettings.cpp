#include "prefs/settings/MVSettings.h"

#include "platform/IntegerValue.h"
#include "platform/UserDefaults.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<UserDefaults>& storeSlot()
{
    static std::unique_ptr<UserDefaults> store;
    return store;
}

UserDefaults& store()
{
    std::unique_ptr<UserDefaults>& slot = storeSlot();
    if (!slot)
        slot = std::make_unique<UserDefaults>(UserDefaults::standardFilePath());
    return *slot;
}

QVariant object(QStringView key)
{
    return store().object(key.toString());
}

void setObject(QStringView key, const QVariant& value)
{
    store().setObject(key.toString(), value);
}

bool isScalar(const QVariant& value)
{
    return value.typeId() != QMetaType::QVariantList && value.typeId() != QMetaType::QStringList;
}

// A file keeps a boolean as a text, which a person may have written: yes, true and any number but 0 are true.
bool booleanValue(const QString& text)
{
    const QString trimmed = text.trimmed();
    return !trimmed.isEmpty() && (u"YyTt"_s.contains(trimmed.front()) || integerValue(trimmed) != 0);
}

} // namespace

void MVSettings::setStore(std::unique_ptr<UserDefaults> store)
{
    storeSlot() = std::move(store);
}

void MVSettings::setPreferencesWithBooleanValue(QStringView key, bool value)
{
    setObject(key, value);
}

void MVSettings::setPreferencesWithStringValue(QStringView key, const QString& value)
{
    setObject(key, value);
}

void MVSettings::setPreferencesWithIntegerValue(QStringView key, qint64 value)
{
    setObject(key, value);
}

void MVSettings::setPreferenceWithDateValue(QStringView key, const QDateTime& value)
{
    setObject(key, value);
}

void MVSettings::setPreferenceWithArray(QStringView key, const QVariantList& value)
{
    setObject(key, value);
}

bool MVSettings::booleanPreferencesForKey(QStringView key)
{
    const QVariant value = object(key);
    return isScalar(value) && booleanValue(value.toString());
}

std::optional<QString> MVSettings::stringPreferencesForKey(QStringView key)
{
    const QVariant value = object(key);
    if (!value.isValid() || !isScalar(value))
        return std::nullopt;
    return value.toString();
}

qint64 MVSettings::integerPreferencesForKey(QStringView key)
{
    const QVariant value = object(key);
    if (!isScalar(value))
        return 0;
    return value.typeId() == QMetaType::Bool ? static_cast<qint64>(value.toBool()) : integerValue(value.toString());
}

QVariant MVSettings::datePreferenceForKey(QStringView key)
{
    return object(key);
}

QVariant MVSettings::arrayPreferenceForKey(QStringView key)
{
    return object(key);
}

void MVSettings::removePreferences(const QList<QStringView>& keys)
{
    for (const QStringView key : keys)
        store().remove(key.toString());
    store().synchronize();
}

void MVSettings::registerDefaults(const QVariantMap& defaults)
{
    store().registerDefaults(defaults);
}
