#include "tests/support/move/MacintoshMove.h"

#include "support/move/FormatText.h"
#include "support/move/MoveTexts.h"
#include "support/move/ShellQuoting.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView scriptFailure{u"Trash AppleScript error: %@"};

MoveCommand inShell(QStringView format, const QStringList& values)
{
    return {u"/bin/sh"_s, {u"-c"_s, formattedText(format, values)}};
}

QStringList trashScript(const QString& item)
{
    return {u"set theFile to POSIX file \""_s + item + u'"', u"tell application \"Finder\""_s,
            u"move theFile to trash"_s, u"end tell"_s};
}

} // namespace

MacintoshMoveCommands::MacintoshMoveCommands(int release)
    : m_release(release)
{
}

MoveCommand MacintoshMoveCommands::openRunningCopy(const QString& destination) const
{
    return {u"/usr/bin/open"_s, {destination}};
}

MoveCommand MacintoshMoveCommands::relaunch(qint64 processIdentifier, const QString& destination) const
{
    const QString path = quotedForShell(destination);
    const QStringView removal = m_release > MacintoshRelease::lastOf10_5
                                    ? QStringView(u"/usr/bin/xattr -d -r com.apple.quarantine %@")
                                    : QStringView(u"/usr/bin/xattr -d com.apple.quarantine %@");
    return inShell(u"(while /bin/kill -0 %d >&/dev/null; do /bin/sleep 0.1; done; %@; /usr/bin/open %@) &",
                   {QString::number(processIdentifier), formattedText(removal, {path}), path});
}

MoveCommand MacintoshMoveCommands::ejectImage(const QString& device) const
{
    return inShell(u"(/bin/sleep 5 && /usr/bin/hdiutil detach %@) &", {quotedForShell(device)});
}

MoveCommand MacintoshMoveCommands::privilegedDelete(const QString& destination) const
{
    return {u"/bin/rm"_s, {u"-rf"_s, destination}};
}

MoveCommand MacintoshMoveCommands::privilegedCopy(const QString& source, const QString& destination) const
{
    return {u"/bin/cp"_s, {u"-pR"_s, source, destination}};
}

MoveCommand MacintoshMoveCommands::listMountedImages()
{
    return {u"/usr/bin/hdiutil"_s, {u"info"_s, u"-plist"_s}};
}

std::optional<MoveCommand> MacintoshMoveCommands::testRunning(const QString& destination) const
{
    if (m_release > MacintoshRelease::lastOf10_5)
        return std::nullopt;
    return inShell(u"/bin/ps ax -o comm | /usr/bin/grep %@/ | /usr/bin/grep -v grep >/dev/null",
                   {quotedForShell(destination)});
}

bool moveToMacintoshTrash(const QString& path, int release, MacintoshTrash& platform)
{
    if (release >= MacintoshRelease::firstOf10_8 && platform.trashItem(path))
        return true;
    const QFileInfo item(path);
    if (platform.recycleItem(item.fileName(), item.path()))
        return true;
    const std::expected<void, QString> end = platform.runScript(trashScript(path));
    if (end)
        return true;
    platform.logError(formattedText(scriptFailure, {end.error()}));
    platform.logError(formattedText(MoveLog::notTrashed, {path}));
    return false;
}
