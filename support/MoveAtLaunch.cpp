#include "support/MoveAtLaunch.h"

#include "platform/Bundle.h"
#include "platform/RunningPrograms.h"
#include "platform/StringTable.h"
#include "support/LinuxMoveOperations.h"
#include "support/PortableBundle.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool runsAlready(const QString& executable)
{
    return std::ranges::any_of(runningPrograms(), [&executable](const RunningProgram& program) {
        return program.executable == executable && program.processIdentifier != QCoreApplication::applicationPid();
    });
}

} // namespace

MoveOutcome moveToApplicationsFolderIfNecessary()
{
    const std::optional<QString> bundle = portableBundleOf(QCoreApplication::applicationDirPath());
    if (!bundle || runsAlready(QCoreApplication::applicationFilePath()))
        return MoveOutcome::Stays;

    const MoveSurroundings surroundings = surroundingsOf(*bundle);
    const MoveCommands commands(linuxCommands, surroundings.platformRelease, QCoreApplication::arguments().sliced(1));
    const StringTable texts =
        StringTable::load(Bundle::mainBundle(), u"MoveApplication"_s, QLocale::system().uiLanguages());
    UserDefaults defaults(UserDefaults::standardFilePath());
    LinuxMoveOperations operations(defaults);
    return moveToApplications(surroundings, commands, texts, operations);
}
