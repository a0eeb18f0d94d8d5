#include "prefs/settings/MVSettings.h"

#include "platform/IntegerValue.h"
#include "platform/UserDefaults.h"

using namespace Qt::StringLiterals;

namespace {

QVariant object(const UserDefaults& store, QStringView key)
{
    return store.object(key.toString());
}

void setObject(UserDefaults& store, QStringView key, const QVariant& value)
{
    store.setObject(key.toString(), value);
}

bool isScalar(const QVariant& value)
{
    return value.typeId() != QMetaType::QVariantList && value.typeId() != QMetaType::QStringList;
}

// A boolean in the file may be a text written by a person: yes, true and any number except 0 are true.
bool booleanValue(const QString& text)
{
    const QString trimmed = text.trimmed();
    return !trimmed.isEmpty() && (u"YyTt"_s.contains(trimmed.front()) || integerValue(trimmed) != 0);
}

} // namespace

void MVSettings::setPreferencesWithBooleanValue(UserDefaults& store, const Setting<bool>& setting, bool value)
{
    setObject(store, setting.key, value);
}

void MVSettings::setPreferencesWithStringValue(UserDefaults& store, const Setting<QString>& setting,
                                               const QString& value)
{
    setObject(store, setting.key, value);
}

void MVSettings::setPreferencesWithIntegerValue(UserDefaults& store, const Setting<qint64>& setting, qint64 value)
{
    setObject(store, setting.key, value);
}

void MVSettings::setPreferenceWithDateValue(UserDefaults& store, const Setting<QDateTime>& setting,
                                            const QDateTime& value)
{
    setObject(store, setting.key, value);
}

void MVSettings::setPreferenceWithArray(UserDefaults& store, const Setting<QVariantList>& setting,
                                        const QVariantList& value)
{
    setObject(store, setting.key, value);
}

bool MVSettings::booleanPreferencesForKey(const UserDefaults& store, const Setting<bool>& setting)
{
    const QVariant value = object(store, setting.key);
    return isScalar(value) && booleanValue(value.toString());
}

std::optional<QString> MVSettings::stringPreferencesForKey(const UserDefaults& store, const Setting<QString>& setting)
{
    const QVariant value = object(store, setting.key);
    if (!value.isValid() || !isScalar(value))
        return std::nullopt;
    return value.toString();
}

qint64 MVSettings::integerPreferencesForKey(const UserDefaults& store, const Setting<qint64>& setting)
{
    const QVariant value = object(store, setting.key);
    if (!isScalar(value))
        return 0;
    return value.typeId() == QMetaType::Bool ? static_cast<qint64>(value.toBool()) : integerValue(value.toString());
}

QVariant MVSettings::datePreferenceForKey(const UserDefaults& store, const Setting<QDateTime>& setting)
{
    return object(store, setting.key);
}

QVariant MVSettings::arrayPreferenceForKey(const UserDefaults& store, const Setting<QVariantList>& setting)
{
    return object(store, setting.key);
}

void MVSettings::removePreferences(UserDefaults& store, const QList<QStringView>& keys)
{
    for (const QStringView key : keys)
        store.remove(key.toString());
    store.synchronize();
}
