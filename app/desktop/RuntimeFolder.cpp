#include "app/desktop/RuntimeFolder.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr mode_t ownerOnly = S_IRWXU;
constexpr mode_t othersRights = S_IRWXG | S_IRWXO;

} // namespace

FileDescriptor openPrivateFolder(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    FileDescriptor folder(open(name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.isValid())
        return folder;
    // Checks the open folder: the path may have changed.
    struct stat facts{};
    if (fstat(folder.get(), &facts) != 0 || facts.st_uid != geteuid() || (facts.st_mode & othersRights) != 0)
        folder.reset();
    return folder;
}

FileDescriptor openRuntimeFolder()
{
    if (const QString session = qEnvironmentVariable("XDG_RUNTIME_DIR"); session.startsWith(u'/')) {
        if (FileDescriptor folder = openPrivateFolder(session); folder.isValid())
            return folder;
    }
    // A fixed name, so that every start finds it. A folder of another user is refused by openPrivateFolder().
    const QString own = u"/tmp/com.morvel.Pelmora-%1"_s.arg(geteuid());
    mkdir(QFile::encodeName(own).constData(), ownerOnly);
    return openPrivateFolder(own);
}
