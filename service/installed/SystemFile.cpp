#include "service/installed/SystemFile.h"

#include "platform/FileDescriptor.h"

#include <QFile>

#include <cerrno>
#include <optional>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

SystemFileFault fault(const QString& sentence, const QByteArray& path)
{
    return {.isAbsent = false, .reason = sentence.arg(QFile::decodeName(path))};
}

SystemFileFault systemFault(int error, const QByteArray& path)
{
    if (error == ENOENT)
        return {.isAbsent = true, .reason = {}};
    if (error == ELOOP || error == ENOTDIR)
        return fault(u"%1 est un lien symbolique, ou n’est pas un dossier"_s, path);
    const std::string reason = std::system_category().message(error);
    return fault(u"%1 : "_s + QString::fromLocal8Bit(reason.c_str()), path);
}

std::optional<SystemFileFault> faultOf(const FileDescriptor& opened, const QByteArray& path, uid_t owner, mode_t type)
{
    struct stat status = {};
    if (::fstat(opened.get(), &status) != 0)
        return systemFault(errno, path);
    if ((status.st_mode & S_IFMT) != type)
        return fault(u"%1 n’est pas un fichier ordinaire"_s, path);
    if (status.st_uid != owner)
        return fault(u"%1 n’appartient pas à root"_s, path);
    // Access control lists that allow writing show in the group's bits.
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        return fault(u"%1 peut être modifié par d’autres que root"_s, path);
    return std::nullopt;
}

} // namespace

std::expected<void, SystemFileFault> checkSystemFile(const SystemPlace& place)
{
    QByteArray path = place.root;
    FileDescriptor folder(::open(path.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.isValid())
        return std::unexpected(systemFault(errno, path));
    if (auto wrong = faultOf(folder, path, place.owner, S_IFDIR))
        return std::unexpected(*wrong);

    const QList<QByteArray> parts = place.relative.split('/');
    for (qsizetype index = 0; index < parts.size(); ++index) {
        const bool isFile = index == parts.size() - 1;
        path += (path.endsWith('/') ? "" : "/") + parts[index];
        // A symbolic link is opened as such, and then has the wrong type.
        const int flags = O_PATH | O_NOFOLLOW | O_CLOEXEC | (isFile ? 0 : O_DIRECTORY);
        FileDescriptor next(::openat(folder.get(), parts[index].constData(), flags));
        if (!next.isValid())
            return std::unexpected(systemFault(errno, path));
        if (auto wrong = faultOf(next, path, place.owner, isFile ? S_IFREG : S_IFDIR))
            return std::unexpected(*wrong);
        folder = std::move(next);
    }
    return {};
}
