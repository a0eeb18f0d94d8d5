#include "app/cards/Console.h"
#include "app/cards/ProgramStart.h"
#include "app/cards/RunWithoutWindow.h"
#include "app/cards/UserLauncher.h"

using namespace Qt::StringLiterals;

namespace {

int printed(const QString& text)
{
    return Console::print(text) ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    const std::expected<CommandLine, int> command = startProgram(argc, argv);
    if (!command)
        return command.error();
    switch (command->action) {
    case CommandLine::Action::ShowHelp:
        return printed(CommandLine::helpText());
    case CommandLine::Action::ShowVersion:
        return printed(u"pelmora " PELMORA_VERSION "\n"_s);
    case CommandLine::Action::Save:
        return runSave(*command, argv[0]);
    case CommandLine::Action::Print:
        return runPrint(*command, argv[0]);
    case CommandLine::Action::Read:
        return runRead(*command, argv[0]);
    case CommandLine::Action::AddLauncher:
        return addLauncher();
    case CommandLine::Action::RemoveLauncher:
        return removeLauncher();
    case CommandLine::Action::ShowWindow:
        break;
    }
    return refuseArguments(u"pelmora-cards n’ouvre pas de fenêtre."_s);
}
