#include "app/WindowLoader.h"

#include "app/WindowModule.h"
#include "app/cards/Console.h"
#include "support/MXLog.h"

#include <QFile>
#include <QFileInfo>
#include <QLibrary>

using namespace Qt::StringLiterals;

namespace {

constexpr int failure = 1;

// Qt can do without a display when it is told to; otherwise it would end the program without a word for people.
bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

// There is no application object yet that would know.
QString programFolder()
{
    return QFileInfo(QFile::symLinkTarget(u"/proc/self/exe"_s)).path();
}

} // namespace

int loadAndRunWindow(const CommandLine& command, int argc, char** argv)
{
    if (!hasDisplay()) {
        Console::complain(u"il n’y a pas d’écran où ouvrir une fenêtre."_s);
        return failure;
    }
    // Never unloaded: what it has set up may be in use until the very end.
    QLibrary module(programFolder() + u"/../libexec/pelmora/pelmora-window.so"_s);
    const auto run = reinterpret_cast<decltype(&pelmoraRunWindow)>(module.resolve("pelmoraRunWindow"));
    if (run == nullptr) {
        MXLog::logError("The windows cannot be loaded: {}", module.errorString());
        Console::complain(u"l’installation de Pelmora est incomplète."_s);
        return failure;
    }
    return run(command, argc, argv);
}
