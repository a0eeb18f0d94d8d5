#pragma once

#include "update/UpdateFailure.h"

#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <expected>
#include <memory>
#include <optional>

/// The downloaded package, in a folder that only the user can access. Deleted unless it is kept.
class UpdatePackage
{
public:
    /// Makes the file and its folder, which only the user can access then, and removes packages of earlier updates.
    [[nodiscard]] static std::expected<std::unique_ptr<UpdatePackage>, UpdateFailure> create(const QString& folder,
                                                                                             const QString& name);

    [[nodiscard]] std::optional<UpdateFailure> write(const QByteArray& piece);

    void close() { m_file.close(); }

    [[nodiscard]] QString path() const { return m_file.fileName(); }

    void keep() { m_folder.setAutoRemove(false); }

private:
    explicit UpdatePackage(const QString& folder);

    QTemporaryDir m_folder;
    // Declared last: closed before the folder is removed.
    QFile m_file;
};
