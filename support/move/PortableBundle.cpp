#include "support/move/PortableBundle.h"

#include "support/move/Administrator.h"
#include "support/move/MoveDecision.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

QString localApplicationsFolder()
{
    return u"/Applications"_s;
}

// The folder as it is named and also without symbolic links: paths of running programs have none.
QStringList withoutLinksToo(const QString& folder)
{
    QStringList names{folder};
    const QString resolved = QFileInfo(folder).canonicalFilePath();
    if (!resolved.isEmpty() && resolved != folder)
        names.append(resolved);
    return names;
}

QStringList downloadsFolders()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    // Users without a Downloads folder set it to their home.
    if (folder.isEmpty() || folder == QDir::homePath())
        return {};
    return withoutLinksToo(folder);
}

// The machine's folder, if it exists and the user or an administrator can write to it.
QStringList usableLocalFolders()
{
    const QFileInfo folder(localApplicationsFolder());
    const bool isUsable = folder.isDir() && (folder.isWritable() || Administrator::canBeAsked());
    return isUsable ? QStringList(folder.filePath()) : QStringList();
}

} // namespace

std::optional<QString> bundleOfExecutable(const QString& executable)
{
    QString folder = executable;
    while (folder.lastIndexOf(u'/') > 0) {
        folder.truncate(folder.lastIndexOf(u'/'));
        if (hasApplicationExtension(QStringView(folder).sliced(folder.lastIndexOf(u'/') + 1)))
            return folder;
    }
    return std::nullopt;
}

std::optional<QString> portableBundleOf(const QString& executable)
{
    const QString folder = QFileInfo(executable).path();
    if (!folder.endsWith("/libexec/pelmora"_L1))
        return std::nullopt;
    const QFileInfo tree(folder.chopped("/libexec/pelmora"_L1.size()));
    if (!hasApplicationExtension(tree.fileName()))
        return std::nullopt;
    return tree.filePath();
}

MoveSurroundings surroundingsOf(const QString& bundlePath)
{
    const QString own = QDir::homePath() + "/Applications"_L1;
    MoveSurroundings surroundings;
    surroundings.bundlePath = bundlePath;
    surroundings.processIdentifier = QCoreApplication::applicationPid();
    surroundings.applicationsFolders = withoutLinksToo(own) + withoutLinksToo(localApplicationsFolder());
    surroundings.userApplicationsFolder = own;
    surroundings.localApplicationsFolders = usableLocalFolders();
    surroundings.downloadsFolders = downloadsFolders();
    return surroundings;
}
