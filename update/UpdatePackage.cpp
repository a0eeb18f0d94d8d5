#include "update/UpdatePackage.h"

#include <QDir>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView folderPrefix{"package-"};

// Also packages of a killed run.
void removeEarlierPackages(const QString& folder)
{
    const QDir parent(folder);
    const QStringList names =
        parent.entryList({folderPrefix + u'*'}, QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QString& name : names)
        QDir(parent.filePath(name)).removeRecursively();
}

UpdateFailure failureOf(int error)
{
    return error == ENOSPC || error == EDQUOT || error == EFBIG ? UpdateFailure::DiskFull : UpdateFailure::CannotWrite;
}

} // namespace

UpdatePackage::UpdatePackage(const QString& folder)
    : m_folder(folder + u'/' + folderPrefix + "XXXXXX"_L1)
{
}

std::expected<std::unique_ptr<UpdatePackage>, UpdateFailure> UpdatePackage::create(const QString& folder,
                                                                                   const QString& name)
{
    errno = 0;
    if (!QDir().mkpath(folder))
        return std::unexpected(failureOf(errno));
    // Other users must not replace the verified package. Fails for a folder of another user.
    errno = 0;
    if (!QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        return std::unexpected(failureOf(errno));
    removeEarlierPackages(folder);

    errno = 0;
    std::unique_ptr<UpdatePackage> package(new UpdatePackage(folder));
    if (!package->m_folder.isValid())
        return std::unexpected(failureOf(errno));
    package->m_file.setFileName(package->m_folder.filePath(name));
    errno = 0;
    // Unbuffered, so that a full disk is noticed at once.
    if (!package->m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                              QFile::ReadOwner | QFile::WriteOwner))
        return std::unexpected(failureOf(errno));
    return package;
}

std::optional<UpdateFailure> UpdatePackage::write(const QByteArray& piece)
{
    errno = 0;
    const qint64 written = m_file.write(piece);
    if (written == piece.size())
        return std::nullopt;
    // An incomplete write without an error means that the disk is full.
    return written >= 0 ? UpdateFailure::DiskFull : failureOf(errno);
}
