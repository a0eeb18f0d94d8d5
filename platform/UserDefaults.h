#pragma once

#include <QString>
#include <QVariant>

#include <memory>

class QSettings;

/// The per-user store of settings: an INI file, over registered defaults that live in memory and are never written. The
/// file names patients (recent attestations): it is its owner's alone (0600), and so is a folder that is made for it.
/// Main thread only.
class UserDefaults
{
public:
    /// A store in the given file, which need not exist; rights of others to an existing one are taken away. In the
    /// place of anything but a plain file, a pipe for one, the settings live in memory until the store's end.
    explicit UserDefaults(const QString& filePath);
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;
    /// Writes what was set.
    ~UserDefaults();

    /// The file of the current user: MORVEL/Pelmora.conf in the XDG configuration folder.
    [[nodiscard]] static QString standardFilePath();

    /// Values that are read where the user has stored none.
    void registerDefaults(const QVariantMap& defaults);

    /// The stored value, else the registered one, else an invalid value. An array is a QVariantList of any length.
    [[nodiscard]] QVariant object(const QString& key) const;
    void setObject(const QString& key, const QVariant& value);
    void remove(const QString& key);

    /// Forces what was set to the disk.
    void synchronize();

private:
    class Store;

    [[nodiscard]] QVariantList arrayObject(const QString& key) const;

    const std::unique_ptr<Store> m_settings;
    QVariantMap m_registered;
};
