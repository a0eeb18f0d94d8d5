#include "support/move/MoveAtLaunch.h"

#include "platform/Bundle.h"
#include "support/move/LinuxMoveCommands.h"
#include "support/move/LinuxMoveOperations.h"
#include "support/move/PortableBundle.h"
#include "support/move/RunningPrograms.h"
#include "support/move/StringTable.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cerrno>

#include <sys/file.h>

using namespace Qt::StringLiterals;

namespace {

QString executableOfThisProcess()
{
    return QFile::symLinkTarget(u"/proc/self/exe"_s);
}

bool runsAlready(const QString& executable)
{
    return std::ranges::any_of(runningPrograms(), [&executable](const RunningProgram& program) {
        return program.executable == executable && program.processIdentifier != QCoreApplication::applicationPid();
    });
}

MoveOutcome offerToMove(const QString& bundlePath)
{
    const MoveSurroundings surroundings = surroundingsOf(bundlePath);
    const LinuxMoveCommands commands(QCoreApplication::arguments().sliced(1));
    const StringTable texts = StringTable::load(Bundle::mainBundle(), u"MoveApplication"_s, {u"fr"_s});
    UserDefaults defaults(UserDefaults::standardFilePath());
    LinuxMoveOperations operations(defaults);
    return moveToApplications(surroundings, commands, texts, operations);
}

} // namespace

MoveOutcome moveToApplicationsFolderIfNecessary()
{
    const QString executablePath = executableOfThisProcess();
    const std::optional<QString> bundle = portableBundleOf(executablePath);
    if (!bundle)
        return MoveOutcome::Stays;

    // The process that shows the question holds this lock. On file systems without locks the question is asked anyway.
    QFile executable(executablePath);
    if (executable.open(QIODevice::ReadOnly) && flock(executable.handle(), LOCK_EX | LOCK_NB) != 0 &&
        errno == EWOULDBLOCK)
        return MoveOutcome::Ends;
    return runsAlready(executablePath) ? MoveOutcome::Stays : offerToMove(*bundle);
}
