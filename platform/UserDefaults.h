#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

/// The per-user store of settings: an INI file, over registered defaults that live in memory and are never written.
/// Main thread only.
class UserDefaults
{
public:
    /// A store in the given file, which need not exist.
    explicit UserDefaults(const QString& filePath);

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
    [[nodiscard]] QVariantList arrayObject(const QString& key) const;

    QSettings m_settings;
    QVariantMap m_registered;
};
