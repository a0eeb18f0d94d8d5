#include "platform/PrivateFile.h"

#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace {

// What people can act on has a sentence of its own; anything else is told as the system tells it.
QString reasonOfFailure(const QSaveFile& file)
{
    const QFileInfo target(file.fileName());
    if (target.isDir())
        return u"un dossier porte déjà ce nom"_s;
    const QFileInfo folder(target.path());
    if (!folder.isDir())
        return u"le dossier n’existe pas"_s;
    if (file.error() == QFileDevice::ResourceError)
        return u"il n’y a plus de place sur le disque"_s;
    if (file.error() == QFileDevice::PermissionsError || !folder.isWritable() ||
        (target.exists() && !target.isWritable()))
        return u"l’écriture n’y est pas autorisée"_s;
    return u"l’écriture a échoué (%1)"_s.arg(file.errorString());
}

} // namespace

std::expected<void, QString> writePrivateFile(const QString& path, const QByteArray& content)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return std::unexpected(reasonOfFailure(file));
    // Before the first byte: the temporary file would otherwise have the permissions of any new file, or of the old
    // one.
    if (!file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) ||
        file.write(content) != content.size()) {
        const QString reason = reasonOfFailure(file);
        file.cancelWriting();
        return std::unexpected(reason);
    }
    if (!file.commit())
        return std::unexpected(reasonOfFailure(file));
    return {};
}
