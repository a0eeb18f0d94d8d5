#include "app/cards/ProgramStart.h"

#include "app/cards/Console.h"
#include "platform/CoreDumps.h"
#include "platform/NativePath.h"
#include "platform/files/FailedWrites.h"
#include "support/QtMessages.h"

using namespace Qt::StringLiterals;

namespace {

QStringList decoded(int argc, char** argv)
{
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(pathFromBytes(argv[index]));
    return arguments;
}

} // namespace

std::expected<CommandLine, int> startProgram(int argc, char** argv)
{
    disableCoreDumps();
    sendQtMessagesToLog();
    // Whoever reads what is printed may leave, and files may be limited: the work goes on, and the exit code tells.
    ignoreSignalsOfFailedWrites();

    std::expected<CommandLine, QString> command = CommandLine::parse(decoded(argc, argv));
    if (!command)
        return std::unexpected(refuseArguments(command.error()));
    return *std::move(command);
}

int refuseArguments(const QString& problem)
{
    constexpr int wrongUsage = 2;
    Console::complain(problem);
    Console::advise(u"« pelmora --help » affiche l’aide."_s);
    return wrongUsage;
}
