#pragma once

#include "prefs/settings/Settings.h"

#include <QDateTime>
#include <QVariant>

#include <optional>

class UserDefaults;

/// Typed access to the settings in a store. An absent key gives the type's empty value. Main thread only.
class MVSettings final
{
public:
    MVSettings() = delete;

    static void setPreferencesWithBooleanValue(UserDefaults& store, const Setting<bool>& setting, bool value);
    static void setPreferencesWithStringValue(UserDefaults& store, const Setting<QString>& setting,
                                              const QString& value);
    static void setPreferencesWithIntegerValue(UserDefaults& store, const Setting<qint64>& setting, qint64 value);
    static void setPreferenceWithDateValue(UserDefaults& store, const Setting<QDateTime>& setting,
                                           const QDateTime& value);
    static void setPreferenceWithArray(UserDefaults& store, const Setting<QVariantList>& setting,
                                       const QVariantList& value);

    [[nodiscard]] static bool booleanPreferencesForKey(const UserDefaults& store, const Setting<bool>& setting);
    [[nodiscard]] static std::optional<QString> stringPreferencesForKey(const UserDefaults& store,
                                                                        const Setting<QString>& setting);
    [[nodiscard]] static qint64 integerPreferencesForKey(const UserDefaults& store, const Setting<qint64>& setting);
    /// The stored value of any type, or invalid: the caller checks the type.
    [[nodiscard]] static QVariant datePreferenceForKey(const UserDefaults& store, const Setting<QDateTime>& setting);
    [[nodiscard]] static QVariant arrayPreferenceForKey(const UserDefaults& store,
                                                        const Setting<QVariantList>& setting);

    /// Removes the keys and writes the store once.
    static void removePreferences(UserDefaults& store, const QList<QStringView>& keys);
};
