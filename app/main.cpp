#include "app/WindowRun.h"
#include "app/cards/Console.h"
#include "app/cards/ProgramStart.h"

using namespace Qt::StringLiterals;

namespace {

// Without a display Qt ends the program with its own message, unless QT_QPA_PLATFORM is set.
bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

} // namespace

int main(int argc, char* argv[])
{
    const std::expected<CommandLine, int> command = startProgram(argc, argv);
    if (!command)
        return command.error();
    if (command->action != CommandLine::Action::ShowWindow)
        return refuseArguments(u"pelmora-window ne fait qu’ouvrir la fenêtre."_s);
    if (!hasDisplay()) {
        Console::complain(u"il n’y a pas d’écran où ouvrir une fenêtre."_s);
        return 1;
    }
    return runWindow(*command, argc, argv);
}
