#include "service/ProcessSetup.h"
#include "service/ReaderlessLibrary.h"
#include "service/ServiceCommandLine.h"
#include "service/ServiceLoop.h"
#include "service/SimulatedReader.h"
#include "service/SiteFunds.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <system_error>

namespace {

int fail(int status, std::string_view reason)
{
    std::cerr << "com.morvel.lvit: " << reason << '\n';
    return status;
}

std::unique_ptr<ReadingLibrary> readingLibrary(const ServiceCommandLine& line)
{
    if (line.simulatedCard)
        return std::make_unique<SimulatedReader>(*line.simulatedCard);
    return std::make_unique<ReaderlessLibrary>();
}

} // namespace

int main(int argc, char* argv[])
{
    const std::expected<ServiceCommandLine, std::string> line =
        parseCommandLine(QList<QByteArray>(argv + 1, argv + argc));
    if (!line)
        return fail(2, line.error() + " (voir --help)");
    if (line->action == ServiceCommandLine::Action::ShowHelp)
        return (std::cout << helpText() << std::flush) ? 0 : 1;
    if (line->action == ServiceCommandLine::Action::ShowVersion)
        return (std::cout << "com.morvel.lvit " PELMORA_VERSION "\n" << std::flush) ? 0 : 1;

    if (!protectProcess())
        return fail(1, std::system_category().message(errno));
    std::optional<ChannelDescriptors> channel = takeStandardChannel();
    if (!channel)
        return fail(1, std::system_category().message(errno));

    const SiteFunds funds = loadFunds(resourceFolder());
    for (const QString& warning : funds.warnings)
        std::cerr << warning.toStdString() << '\n';
    ServiceLoop loop(ServiceCommands(readingLibrary(*line), funds.table), std::move(channel->requests),
                     std::move(channel->replies));
    switch (loop.run()) {
    case ServiceLoop::End::Closed:
        return 0;
    case ServiceLoop::End::Malformed:
        return fail(1, "requête illisible sur le canal");
    case ServiceLoop::End::Failed:
        return fail(1, std::system_category().message(errno));
    case ServiceLoop::End::BeyondUse:
        // The thread that waits cannot be ended, nor outlived in any other way. The application starts another service.
        std::_Exit(fail(1, "un appel au lecteur reste sans réponse : le service est à remplacer"));
    }
}
