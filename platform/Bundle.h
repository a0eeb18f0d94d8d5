#pragma once

#include <QVariant>

#include <memory>
#include <optional>

/// The resource folder, found from the program's own path, so that the tree can be moved. Main thread only.
class Bundle
{
public:
    /// A bundle whose resources are in the given folder.
    explicit Bundle(QString resourceFolder);

    /// The bundle of the running program: share/pelmora beside libexec/pelmora. Needs a QCoreApplication.
    [[nodiscard]] static Bundle mainBundle();

    /// Path of the resource file "name.type"; absent when there is none or when the name contains "/".
    [[nodiscard]] std::optional<QString> pathForResource(const QString& name, const QString& type) const;

    /// Path of that file in the folder of a language: "fr.lproj" for "fr". Absent when there is none.
    [[nodiscard]] std::optional<QString> pathForLocalizedResource(const QString& name, const QString& type,
                                                                  const QString& language) const;

    /// Path of a program of the tree's libexec/pelmora.
    [[nodiscard]] QString pathForProgram(const QString& name) const;

    /// A value of the resource "Info.plist"; invalid when the key is missing. The file is read at the first call; a
    /// missing or broken file counts as empty.
    [[nodiscard]] QVariant objectForInfoDictionaryKey(QStringView key) const;

private:
    QString m_resourceFolder;
    // Shared by the copies of a bundle, so that the file is read once.
    std::shared_ptr<std::optional<QVariantMap>> m_information;
};
