#include "service/DeadlineLibrary.h"
#include "service/LibraryChoice.h"
#include "service/ProcessSetup.h"
#include "service/Sandbox.h"
#include "service/ServiceCommandLine.h"
#include "service/ServiceLog.h"
#include "service/ServiceLoop.h"
#include "service/SimulatedReader.h"
#include "service/SiteFunds.h"
#include "service/check/LibraryCheck.h"
#include "service/check/MapCheck.h"
#include "service/diagnosis/DiagnosisRun.h"
#include "service/embedded/EmbeddedLibrary.h"
#include "service/embedded/SiteMaps.h"
#include "service/installed/InstalledLibrary.h"
#include "service/pcsc/PcscReaders.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <system_error>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Used before the log is open.
int fail(int status, std::string_view reason)
{
    std::cerr << "com.morvel.lvit: " << reason << '\n';
    return status;
}

int failWithErrno()
{
    return fail(1, std::system_category().message(errno));
}

bool writeAll(const FileDescriptor& output, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t count = ::write(output.get(), bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count < 0 && errno != EINTR)
            return false;
        bytes = bytes.sliced(std::max(count, ssize_t{0}));
    }
    return true;
}

std::unique_ptr<ReadingLibrary> readingLibrary(const ServiceCommandLine& line)
{
    if (line.simulatedCard)
        return std::make_unique<SimulatedReader>(*line.simulatedCard);
    SiteMaps cards = loadCardMaps(resourceFolder());
    for (const QString& warning : cards.warnings)
        logLine(warning);
    auto embedded = std::make_unique<EmbeddedLibrary>(std::make_unique<PcscReaders>(), std::move(cards.maps));
    return std::make_unique<DeadlineLibrary>(
        std::make_unique<LibraryChoice>(std::make_unique<InstalledLibrary>(), std::move(embedded)));
}

[[noreturn]] void tellDiagnosis(const ChannelDescriptors& output, const QList<Protection>& protections)
{
    Diagnosis diagnosis =
        diagnose({.resourceFolder = resourceFolder(), .installedLibrary = InstalledLibrary::standardPlace()});
    diagnosis.protections = protections;
    const QByteArray text = diagnosisText(diagnosis).toUtf8();
    const bool isTold = writeAll(output.replies, text);
    // Ends without waiting for a hanging call.
    std::_Exit(isTold && diagnosis.isReady() ? 0 : 1);
}

int tellCheck(const CheckReport& report)
{
    const bool isTold = (std::cout << checkText(report).toStdString() << std::flush).good();
    return isTold && report.isSound() ? 0 : 1;
}

int checkLibraryFile(const QByteArray& path)
{
    const QFileInfo file(QFile::decodeName(path));
    if (!file.isFile() || !file.isReadable())
        return fail(2, path.toStdString() + " : fichier illisible");
    // Without a slash, the loader would search the system's folders.
    return tellCheck(checkLibrary(QFile::encodeName(file.absoluteFilePath()),
                                  {.writableFolders = libraryFolders(), .pcscSocket = pcscSocketPath()}));
}

int checkMapFile(const ServiceCommandLine& line)
{
    const std::expected<QByteArray, QString> json = readCardMapFile(QFile::decodeName(line.checkedFile));
    if (!json)
        return fail(2, line.checkedFile.toStdString() + " : " + json.error().toStdString());
    if (!line.recordedCard)
        return tellCheck(checkCardMap(*json, std::nullopt));
    const std::expected<RecordedCard, QString> card = readRecordedCard(QFile::decodeName(*line.recordedCard));
    if (!card)
        return fail(2, card.error().toStdString());
    return tellCheck(checkCardMap(*json, *card));
}

int serve(const ServiceCommandLine& line, ChannelDescriptors channel)
{
    const SiteFunds funds = loadFunds(resourceFolder());
    for (const QString& warning : funds.warnings)
        logLine(warning);
    ServiceLoop loop(ServiceCommands(readingLibrary(line), funds.table), std::move(channel.requests),
                     std::move(channel.replies));
    switch (loop.run()) {
    case ServiceLoop::End::Closed:
        return 0;
    case ServiceLoop::End::Malformed:
        logLine(u"requête illisible sur le canal"_s);
        return 1;
    case ServiceLoop::End::Failed:
        logLine(qt_error_string(errno));
        return 1;
    case ServiceLoop::End::BeyondUse:
        logLine(u"un appel au lecteur reste sans réponse : le service est à remplacer"_s);
        // The waiting thread cannot be ended in another way. The application starts another service.
        std::_Exit(1);
    }
    return 1;
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
        return failWithErrno();
    if (line->action == ServiceCommandLine::Action::CheckLibrary)
        return checkLibraryFile(line->checkedFile);
    if (line->action == ServiceCommandLine::Action::CheckMap)
        return checkMapFile(*line);
    std::optional<ChannelDescriptors> channel = takeStandardChannel();
    if (!channel)
        return failWithErrno();
    openSystemLog();
    const Sandbox sandbox({.writableFolders = libraryFolders(), .pcscSocket = pcscSocketPath()});
    if (line->action == ServiceCommandLine::Action::Diagnose)
        tellDiagnosis(*channel, sandbox.protections());
    if (const std::optional<QString> obstacles = sandbox.obstacles())
        logLine(*obstacles);
    return serve(*line, std::move(*channel));
}
