#include "app/cards/CardServiceCommand.h"

#include "app/models/CommandLine.h"
#include "platform/Bundle.h"

using namespace Qt::StringLiterals;

ServiceCommand cardServiceCommand(const CommandLine& command, const Bundle& bundle)
{
    if (command.cardService)
        return {*command.cardService, {}};

    ServiceCommand service{bundle.pathForProgram(u"com.morvel.lvit"_s), {}};
    if (command.simulate) {
        // A specimen that is not there any more is a card that is not in the reader.
        const QString specimen = bundle.pathForResource(u"specimen"_s, u"xml"_s).value_or(u"specimen.xml"_s);
        service.arguments = {u"--simulate"_s, command.simulatedCard.value_or(specimen)};
    }
    return service;
}
