#include "app/WindowLoader.h"
#include "app/cards/Console.h"
#include "app/cards/Runs.h"
#include "app/models/CommandLine.h"
#include "platform/CoreDumps.h"
#include "platform/NativePath.h"
#include "platform/files/FailedWrites.h"
#include "support/QtMessages.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int wrongUsage = 2;

QStringList decoded(int argc, char** argv)
{
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(pathFromBytes(argv[index]));
    return arguments;
}

int printed(const QString& text)
{
    return Console::print(text) ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    disableCoreDumps();
    sendQtMessagesToLog();
    // Whoever reads what is printed may leave, and files may be limited: the work goes on, and the exit code tells.
    ignoreSignalsOfFailedWrites();

    const std::expected<CommandLine, QString> command = CommandLine::parse(decoded(argc, argv));
    if (!command) {
        Console::complain(command.error());
        Console::advise(u"« pelmora --help » affiche l’aide."_s);
        return wrongUsage;
    }
    switch (command->action) {
    case CommandLine::Action::ShowHelp:
        return printed(CommandLine::helpText());
    case CommandLine::Action::ShowVersion:
        return printed(u"pelmora " PELMORA_VERSION "\n"_s);
    case CommandLine::Action::Save:
        return runSave(*command, argv[0]);
    case CommandLine::Action::Print:
        return runPrint(*command, argv[0]);
    case CommandLine::Action::ShowWindow:
        return loadAndRunWindow(*command, argc, argv);
    }
    return wrongUsage;
}
