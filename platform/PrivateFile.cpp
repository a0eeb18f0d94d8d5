#include "platform/PrivateFile.h"

#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace {

QString noSpace()
{
    return u"il n’y a plus de place sur le disque"_s;
}

// What people can act on has a sentence of its own; anything else is told as the system tells it.
QString reasonOfFailure(const QSaveFile& file)
{
    const QFileInfo target(file.fileName());
    if (target.isDir())
        return u"un dossier porte déjà ce nom"_s;
    const QFileInfo folder(target.path());
    if (!folder.isDir())
        return u"le dossier n’existe pas"_s;
    if (file.error() == QFileDevice::PermissionsError || !folder.isWritable() ||
        (target.exists() && !target.isWritable()))
        return u"l’écriture n’y est pas autorisée"_s;
    if (file.error() == QFileDevice::ResourceError)
        return noSpace();
    return u"l’écriture a échoué (%1)"_s.arg(file.errorString());
}

// All of the content, handed to the system. A write that stops short without an error has met the end of the disk.
std::expected<void, QString> writeAll(QSaveFile& file, const QByteArray& content)
{
    if (file.write(content) == content.size() && file.flush())
        return {};
    if (file.error() == QFileDevice::NoError)
        return std::unexpected(noSpace());
    return std::unexpected(reasonOfFailure(file));
}

} // namespace

std::expected<void, QString> writePrivateFile(const QString& path, const QByteArray& content)
{
    QSaveFile file(path);
    // Before the first byte: the temporary file would otherwise have the permissions of any new file, or of the old
    // one.
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
        const QString reason = reasonOfFailure(file);
        file.cancelWriting();
        return std::unexpected(reason);
    }
    if (std::expected<void, QString> written = writeAll(file, content); !written) {
        file.cancelWriting();
        return written;
    }
    if (!file.commit())
        return std::unexpected(reasonOfFailure(file));
    return {};
}
