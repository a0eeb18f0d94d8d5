#pragma once

#include "prefs/settings/Settings.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <optional>

class UserDefaults;

/// The typed door to the per-user settings; never instantiated, and without a state of its own: the store is handed in.
/// A read of an absent key gives the type's empty value. Main thread only.
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
    /// Whatever is stored, invalid when nothing is: the caller checks the type.
    [[nodiscard]] static QVariant datePreferenceForKey(const UserDefaults& store, const Setting<QDateTime>& setting);
    /// Whatever is stored, invalid when nothing is: the caller checks the type.
    [[nodiscard]] static QVariant arrayPreferenceForKey(const UserDefaults& store,
                                                        const Setting<QVariantList>& setting);

    /// Removes each key, then forces the store to the disk, once.
    static void removePreferences(UserDefaults& store, const QList<QStringView>& keys);
};
