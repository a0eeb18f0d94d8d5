#pragma once

#include <QVariant>

#include <memory>

/// What the administrator of a site sets for all its users.
struct SiteValues
{
    QVariantMap defaults; ///< used before registered defaults
    QVariantMap locked;   ///< used before the user's own values, which cannot be changed
};

/// The user's settings: an INI file, and registered defaults in memory. The file names patients (recent attestations):
/// it and a folder made for it can be read by its owner only. Main thread only.
class UserDefaults
{
public:
    /// A store in the given file, which may be missing. Permissions of others to an existing file are removed. When the
    /// path is not a plain file, for example a pipe, the settings are kept in memory only.
    explicit UserDefaults(const QString& filePath);
    Q_DISABLE_COPY(UserDefaults)
    ~UserDefaults();

    [[nodiscard]] static QString standardFilePath();

    /// Values for keys that the user has not set.
    void registerDefaults(const QVariantMap& defaults);
    /// Values of the site. They are kept in memory only.
    void setSiteValues(SiteValues values);
    [[nodiscard]] bool isLocked(const QString& key) const { return m_site.locked.contains(key); }

    /// The locked value, or else the stored one, the site's default or the registered one; invalid when there is none.
    /// An array is a QVariantList.
    [[nodiscard]] QVariant object(const QString& key) const;
    // A locked key keeps what the user has stored.
    void setObject(const QString& key, const QVariant& value);
    void remove(const QString& key);

    /// Writes changes to the file, and reads those of other processes.
    void synchronize();

private:
    class Store;

    [[nodiscard]] QVariantList arrayObject(const QString& key) const;

    const std::unique_ptr<Store> m_settings;
    QVariantMap m_registered;
    SiteValues m_site;
};
