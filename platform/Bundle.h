#pragma once

#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

/// The installed tree as the programs see it: found from the program's own place, so that the whole tree can be moved.
/// Main thread only.
class Bundle
{
public:
    /// A bundle whose resources lie in the given folder.
    explicit Bundle(QString resourceFolder);

    /// The bundle of the running program, which lies in libexec/pelmora: the tree's share/pelmora. Needs a
    /// QCoreApplication.
    [[nodiscard]] static Bundle mainBundle();

    /// Path of the resource file "name.type"; absent when there is none. A name that is not a plain file name has none.
    [[nodiscard]] std::optional<QString> pathForResource(const QString& name, const QString& type) const;

    /// Path of that file in a language (as "fr"), in the folder "fr.lproj"; absent when there is none.
    [[nodiscard]] std::optional<QString> pathForLocalizedResource(const QString& name, const QString& type,
                                                                  const QString& language) const;

    /// The value of a key of the information dictionary, the resource "Info.plist"; invalid when it has none. The
    /// dictionary is read when it is first asked for; one that is missing or broken is empty.
    [[nodiscard]] QVariant objectForInfoDictionaryKey(QStringView key) const;

private:
    QString m_resourceFolder;
    // Copies of the bundle share what one of them has read.
    std::shared_ptr<std::optional<QVariantMap>> m_information;
};
