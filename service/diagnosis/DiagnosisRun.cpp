#include "service/diagnosis/DiagnosisRun.h"

#include "service/PcscBroker.h"
#include "service/embedded/SiteMaps.h"
#include "service/installed/InstalledFunctions.h"
#include "service/installed/InstalledLibrary.h"

#include <QFileInfo>

#include <array>
#include <future>
#include <thread>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The result of the work; absent when it takes longer. Its thread is then left running.
template <typename Work>
auto within(std::chrono::milliseconds patience, Work work) -> std::optional<decltype(work())>
{
    std::packaged_task<decltype(work())()> task(std::move(work));
    std::future<decltype(work())> result = task.get_future();
    std::thread(std::move(task)).detach();
    if (result.wait_for(patience) != std::future_status::ready)
        return std::nullopt;
    return result.get();
}

/// As in "ls -l".
QString permissionsText(const QFileInfo& file)
{
    struct Bit
    {
        QFileDevice::Permission permission = QFileDevice::ReadOwner;
        QChar letter;
    };
    constexpr std::array bits{
        Bit{QFileDevice::ReadOwner, u'r'}, Bit{QFileDevice::WriteOwner, u'w'}, Bit{QFileDevice::ExeOwner, u'x'},
        Bit{QFileDevice::ReadGroup, u'r'}, Bit{QFileDevice::WriteGroup, u'w'}, Bit{QFileDevice::ExeGroup, u'x'},
        Bit{QFileDevice::ReadOther, u'r'}, Bit{QFileDevice::WriteOther, u'w'}, Bit{QFileDevice::ExeOther, u'x'}};
    QString text;
    for (const Bit& bit : bits)
        text += file.permission(bit.permission) ? bit.letter : QChar(u'-');
    return u"%1 %2 %3"_s.arg(text, file.owner(), file.group());
}

SocketFacts socketFacts()
{
    const QByteArray path = pcscSocketPath();
    const QFileInfo file(QFile::decodeName(path));
    return {.path = file.filePath(),
            .permissions = file.exists() ? permissionsText(file) : QString(),
            .isAccessible = ::access(path.constData(), R_OK | W_OK) == 0};
}

Diagnosis::Readers readerFacts()
{
    const std::expected<PcscContext, CardFault> context = PcscContext::establish();
    if (!context)
        return std::unexpected(context.error());
    const std::expected<QList<QByteArray>, CardFault> names = context->readers();
    if (!names)
        return std::unexpected(names.error());
    QList<ReaderFacts> readers;
    for (const ReaderName& name : readerNames(*names))
        readers << ReaderFacts{.name = name, .state = context->state(name.system)};
    return readers;
}

InstalledFacts installedFacts(const SystemPlace& place)
{
    if (const auto functions = loadInstalledFunctions(place); !functions)
        return {.refusal = functions.error(), .isOpen = false, .versions = {}, .readers = {}};
    InstalledLibrary library(place);
    const bool isOpen = library.initialise(LibraryMode::System).has_value();
    return {.refusal = std::nullopt, .isOpen = isOpen, .versions = library.versions(), .readers = library.readers()};
}

} // namespace

Diagnosis diagnose(const DiagnosisPlaces& places)
{
    Diagnosis diagnosis;
    diagnosis.version = QLatin1StringView(PELMORA_VERSION);
    diagnosis.socket = socketFacts();
    diagnosis.readers = within(places.patience, readerFacts);
    diagnosis.installedPath = QFile::decodeName(places.installedLibrary.path());
    diagnosis.installed = within(places.patience, [place = places.installedLibrary] { return installedFacts(place); });
    const SiteMaps cards = loadCardMaps(places.resourceFolder);
    for (const CardMap& map : cards.maps)
        diagnosis.cardMaps << u"%1, version %2"_s.arg(map.name, map.version);
    diagnosis.warnings = cards.warnings;
    return diagnosis;
}
