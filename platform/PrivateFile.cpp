#include "platform/PrivateFile.h"

#include <QSaveFile>

std::expected<void, QString> writePrivateFile(const QString& path, const QByteArray& content)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return std::unexpected(file.errorString());
    // Before the first byte: the temporary file would otherwise have the permissions of any new file, or of the old
    // one.
    if (!file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)) {
        file.cancelWriting();
        return std::unexpected(file.errorString());
    }
    if (file.write(content) != content.size() || !file.commit())
        return std::unexpected(file.errorString());
    return {};
}
