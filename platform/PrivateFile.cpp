#include "platform/PrivateFile.h"

#include <QFileInfo>
#include <QTemporaryFile>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QString noSpace()
{
    return u"il n’y a plus de place sur le disque"_s;
}

// What people can act on has a sentence of its own; anything else is told as the system tells it.
QString reasonOfFailure(const QString& path, const std::error_code& error)
{
    if (QFileInfo(path).isDir())
        return u"un dossier porte déjà ce nom"_s;
    if (!QFileInfo(QFileInfo(path).path()).isDir())
        return u"le dossier n’existe pas"_s;
    if (error == std::errc::no_space_on_device || error.value() == EDQUOT)
        return noSpace();
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
        error == std::errc::read_only_file_system)
        return u"l’écriture n’y est pas autorisée"_s;
    return u"l’écriture a échoué (%1)"_s.arg(QString::fromStdString(error.message()));
}

std::error_code lastError()
{
    return {errno, std::system_category()};
}

// All of the content, on the disk. A write that stops short without an error has met the end of the disk.
std::error_code writeAll(QTemporaryFile& file, const QByteArray& content)
{
    errno = 0;
    if (file.write(content) != content.size() || !file.flush())
        return errno == 0 ? std::make_error_code(std::errc::no_space_on_device) : lastError();
    return fdatasync(file.handle()) == 0 ? std::error_code() : lastError();
}

} // namespace

std::expected<void, QString> writePrivateFile(const QString& path, const QByteArray& content)
{
    // A short name of its own in the same folder: the longest names leave no room for more, and a link that bears the
    // file's name is replaced, not followed. Temporary files are their owner's alone from the start.
    QTemporaryFile file(QFileInfo(path).path() + "/.pelmora-XXXXXX"_L1);
    errno = 0;
    if (!file.open())
        return std::unexpected(reasonOfFailure(path, lastError()));
    if (const std::error_code error = writeAll(file, content))
        return std::unexpected(reasonOfFailure(path, error));
    const QByteArray temporaryName = QFile::encodeName(file.fileName());
    if (std::rename(temporaryName.constData(), QFile::encodeName(path).constData()) != 0)
        return std::unexpected(reasonOfFailure(path, lastError()));
    file.setAutoRemove(false);
    return {};
}
