#pragma once

#include <QString>

#include <optional>

/// The installed tree as the programs see it: found from the program's own place, so that the whole tree can be moved.
class Bundle
{
public:
    /// A bundle whose resources lie in the given folder.
    explicit Bundle(QString resourceFolder);

    /// The bundle of the running program: share/pelmora beside the folder of the executable. Needs a QCoreApplication.
    [[nodiscard]] static Bundle mainBundle();

    /// Path of the resource file "name.type"; absent when there is none. A name that is not a plain file name has none.
    [[nodiscard]] std::optional<QString> pathForResource(const QString& name, const QString& type) const;

private:
    QString m_resourceFolder;
};
