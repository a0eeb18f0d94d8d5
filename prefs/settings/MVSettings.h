#pragma once

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

class UserDefaults;

/// Keys of the settings: the one spelling of each.
namespace SettingsKey {
inline constexpr QStringView lvitMode{u"MVLVitMode"};
inline constexpr QStringView showRightLabelPrintOption{u"MVShowRightLabelPrintOption"};
inline constexpr QStringView attestationsFolder{u"MVAttestationsFolder"};
inline constexpr QStringView recentsAttestation{u"MVRecentsAttestation"};
inline constexpr QStringView statusItemMenu{u"MVStatusItemMenu"};
inline constexpr QStringView debugMode{u"MVDebugMode"};
} // namespace SettingsKey

/// The typed door to the per-user settings; never instantiated. A read of an absent key gives the type's empty value.
/// Main thread only.
class MVSettings final
{
public:
    MVSettings() = delete;

    /// Puts the store in place, before any other operation. The program hands in the user's own, a test a temporary
    /// file.
    static void setStore(std::unique_ptr<UserDefaults> store);

    static void setPreferencesWithBooleanValue(QStringView key, bool value);
    static void setPreferencesWithStringValue(QStringView key, const QString& value);
    static void setPreferencesWithIntegerValue(QStringView key, qint64 value);
    static void setPreferenceWithDateValue(QStringView key, const QDateTime& value);
    static void setPreferenceWithArray(QStringView key, const QVariantList& value);

    [[nodiscard]] static bool booleanPreferencesForKey(QStringView key);
    [[nodiscard]] static std::optional<QString> stringPreferencesForKey(QStringView key);
    [[nodiscard]] static qint64 integerPreferencesForKey(QStringView key);
    /// Whatever is stored, invalid when nothing is: the caller checks the type.
    [[nodiscard]] static QVariant datePreferenceForKey(QStringView key);
    /// Whatever is stored, invalid when nothing is: the caller checks the type.
    [[nodiscard]] static QVariant arrayPreferenceForKey(QStringView key);

    /// Removes each key, then forces the store to the disk, once.
    static void removePreferences(const QList<QStringView>& keys);

    /// Values that are read, in this process alone, where the user has stored none.
    static void registerDefaults(const QVariantMap& defaults);
};
