#include "tests/support/move/FolderTree.h"

#include "tests/common/Files.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

bool writeFile(const QString& path, const QByteArray& content, QFile::Permissions permissions)
{
    return ::writeFile(path, content) && QFile(path).setPermissions(permissions);
}

constexpr QFile::Permissions readable = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther;
constexpr QFile::Permissions executable = readable | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;

} // namespace

bool makeFolderTree(const QString& path)
{
    return writeFile(path + "/bin/pelmora"_L1, "programme", executable) &&
           writeFile(path + u"/share/L'été \"1\".txt"_s, QByteArray(100000, 'x'), readable) &&
           writeFile(path + "/share/.caché"_L1, QByteArray(), readable) && QDir().mkpath(path + "/vide"_L1) &&
           QFile::link(u"bin/pelmora"_s, path + "/lien"_L1) && QFile::link(u"/nulle/part"_s, path + "/perdu"_L1);
}

QStringList folderTreeOf(const QString& path)
{
    QStringList entries;
    QDirIterator iterator(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        const QFileInfo entry(iterator.next());
        struct stat status = {};
        lstat(QFile::encodeName(entry.filePath()).constData(), &status);
        QFile file(entry.filePath());
        const bool isFile = S_ISREG(status.st_mode);
        const QByteArray content = isFile && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        entries.append(u"%1 %2 %3 %4"_s.arg(entry.filePath().mid(path.size()), QString::number(status.st_mode, 8),
                                            entry.symLinkTarget().mid(path.size()), QString::fromUtf8(content)));
    }
    entries.sort();
    return entries;
}
