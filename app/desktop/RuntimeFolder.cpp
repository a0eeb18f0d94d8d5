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
    // What was opened is judged, not the name: that may be another folder's by now.
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
    // Always the same name, so that every start of this user finds it; whoever took the name before gains nothing.
    const QString own = u"/tmp/com.morvel.Pelmora-%1"_s.arg(geteuid());
    mkdir(QFile::encodeName(own).constData(), ownerOnly);
    return openPrivateFolder(own);
}
