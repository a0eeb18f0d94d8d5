#pragma once

#include "update/UpdateFailure.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <expected>
#include <memory>
#include <optional>

/// The file that a package is downloaded to: alone in a folder of its own, both their owner's alone. It goes with this
/// object, unless it is kept.
class UpdatePackage
{
public:
    /// Makes the file, and the folder around it where that is missing, which becomes the user's alone. Packages of
    /// earlier updates that are still there go away.
    [[nodiscard]] static std::expected<std::unique_ptr<UpdatePackage>, UpdateFailure> create(const QString& folder,
                                                                                             const QString& name);

    [[nodiscard]] std::optional<UpdateFailure> write(const QByteArray& piece);

    /// Writes no more.
    void close() { m_file.close(); }

    [[nodiscard]] QString path() const { return m_file.fileName(); }

    /// Leaves the file where it is.
    void keep() { m_folder.setAutoRemove(false); }

private:
    explicit UpdatePackage(const QString& folder);

    QTemporaryDir m_folder;
    // Closed before its folder is removed.
    QFile m_file;
};
