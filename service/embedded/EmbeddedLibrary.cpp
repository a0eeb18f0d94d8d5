#include "service/embedded/EmbeddedLibrary.h"

#include "service/LibraryVersions.h"
#include "service/ServiceLog.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// PC/SC checks its readers every 400 ms.
constexpr std::chrono::milliseconds presenceDelay = 500ms;
// Another program that reads the card, and a restarting PC/SC service, usually need less than two seconds.
constexpr std::chrono::milliseconds turnDelay = 100ms;
constexpr int turnAttempts = 20;

ReadResult resultOf(const CardGap& gap)
{
    return gap.kind == CardGap::Kind::Missing ? ReadResult::Unusable : ReadResult::ReadError;
}

QString explanationOf(const CardFailure& failure)
{
    const auto* gap = std::get_if<CardGap>(&failure);
    return gap != nullptr ? gap->explanation : describe(std::get<CardFault>(failure));
}

/// Whether the read found a health card. The professional's card may be in a reader of the same model.
bool isOfHealthCard(const std::expected<QString, CardFailure>& document)
{
    const auto* fault = document ? nullptr : std::get_if<CardFault>(&document.error());
    return fault == nullptr || *fault == CardFault::CardMute || *fault == CardFault::CardGone ||
           *fault == CardFault::CardSwapped || *fault == CardFault::CardEndless;
}

} // namespace

const std::array<EmbeddedLibrary::Remedy, 6> EmbeddedLibrary::remedies{{
    {.fault = CardFault::CardAbsent, .attempts = 1, .prepare = &EmbeddedLibrary::waitForCard},
    {.fault = CardFault::CardGoneUnheard, .attempts = 1, .prepare = &EmbeddedLibrary::waitForRemoval},
    {.fault = CardFault::ReaderBusy, .attempts = turnAttempts, .prepare = &EmbeddedLibrary::waitForTurn},
    {.fault = CardFault::ReaderUnknown, .attempts = 1, .prepare = &EmbeddedLibrary::findReaderAnew},
    {.fault = CardFault::CardReset, .attempts = 1, .prepare = nullptr},
    {.fault = CardFault::ServiceLost, .attempts = turnAttempts, .prepare = &EmbeddedLibrary::waitForService},
}};

EmbeddedLibrary::EmbeddedLibrary(std::unique_ptr<CardReaders> readers, std::vector<CardMap> maps)
    : m_readers(std::move(readers))
    , m_maps(std::move(maps))
{
}

std::optional<LibraryKind> EmbeddedLibrary::initialise(LibraryMode mode)
{
    m_vitaleReader.reset();
    return mode == LibraryMode::System ? std::nullopt : std::optional(LibraryKind::Embedded);
}

QStringList EmbeddedLibrary::readers()
{
    QStringList names;
    for (const ReaderName& reader : namedReaders())
        names.append(reader.shown);
    return names;
}

bool EmbeddedLibrary::chooseReaders(const QString& vitaleReader, const QString& professionalReader)
{
    const QList<ReaderName> known = namedReaders();
    const auto vitale = std::ranges::find(known, vitaleReader, &ReaderName::shown);
    if (vitale == known.end() || std::ranges::find(known, professionalReader, &ReaderName::shown) == known.end())
        return false;
    m_vitaleReader = *vitale;
    return true;
}

QString EmbeddedLibrary::informations()
{
    QStringList maps;
    for (const CardMap& map : m_maps)
        maps.append(u"%1 %2"_s.arg(map.name, map.version));
    return informationsDocument({.library = u"%1 (PC/SC)"_s.arg(QLatin1StringView(PELMORA_VERSION)),
                                 .cardTable = maps.join(", "_L1),
                                 .destinationTable = u"aucune"_s,
                                 .authorisationTable = u"aucune"_s});
}

std::expected<QString, ReadResult> EmbeddedLibrary::readCard()
{
    m_hint.clear();
    if (!m_vitaleReader)
        return std::unexpected(ReadResult::ReaderFault);
    std::expected<QString, CardFailure> document = readPatiently();
    if (document)
        return *std::move(document);
    logLine(u"lecteur « %1 » : %2"_s.arg(m_vitaleReader->shown, explanationOf(document.error())));
    if (const auto* gap = std::get_if<CardGap>(&document.error()))
        return std::unexpected(resultOf(*gap));
    const CardFault fault = std::get<CardFault>(document.error());
    m_hint = ::hint(fault);
    return std::unexpected(readResult(fault));
}

std::unique_ptr<ReaderWatch> EmbeddedLibrary::watchReader(const ReaderReport& report)
{
    return m_readers->watch(report);
}

QList<ReaderName> EmbeddedLibrary::namedReaders()
{
    m_hint.clear();
    const std::expected<QList<QByteArray>, CardFault> names = m_readers->names();
    if (names)
        return readerNames(*names);
    m_hint = ::hint(names.error());
    logLine(u"liste des lecteurs : %1"_s.arg(describe(names.error())));
    return {};
}

std::expected<QString, CardFailure> EmbeddedLibrary::readPatiently()
{
    std::array<int, remedies.size()> attempts{};
    bool serviceWasLost = false;
    for (;;) {
        std::expected<QString, CardFailure> document = readOnce();
        const CardFault* fault = document ? nullptr : std::get_if<CardFault>(&document.error());
        if (fault == nullptr)
            return document;
        // A restarting service is away for a moment, and its readers a moment longer.
        serviceWasLost = serviceWasLost || *fault == CardFault::ServiceLost || *fault == CardFault::ServiceDown;
        const bool isServiceAway =
            *fault == CardFault::ServiceDown || (serviceWasLost && *fault == CardFault::ReaderUnknown);
        const CardFault cause = isServiceAway ? CardFault::ServiceLost : *fault;
        const auto* remedy = std::ranges::find(remedies, cause, &Remedy::fault);
        if (remedy == remedies.end())
            return document;
        int& made = attempts.at(static_cast<std::size_t>(remedy - remedies.begin()));
        if (made == remedy->attempts)
            return document;
        ++made;
        if (remedy->prepare != nullptr)
            (this->*remedy->prepare)();
    }
}

std::expected<QString, CardFailure> EmbeddedLibrary::readOnce()
{
    std::expected<QString, CardFailure> document = readIn(m_vitaleReader->system);
    if (document || document.error() != CardFailure(CardFault::CardAbsent))
        return document;
    const auto names = m_readers->names();
    for (const ReaderName& other : names ? readerNames(*names) : QList<ReaderName>()) {
        if (other.model != m_vitaleReader->model || other.system == m_vitaleReader->system)
            continue;
        std::expected<QString, CardFailure> found = readIn(other.system);
        if (isOfHealthCard(found))
            return found;
    }
    return document;
}

std::expected<QString, CardFailure> EmbeddedLibrary::readIn(const QByteArray& reader)
{
    m_isConnecting = true;
    const std::expected<std::unique_ptr<CardTransport>, CardFault> card = m_readers->connect(reader);
    m_isConnecting = false;
    if (!card)
        return std::unexpected(card.error());
    CardChannel channel(**card);
    return CardReading(channel, m_maps).readDocument();
}

void EmbeddedLibrary::waitForCard()
{
    m_readers->waitForCard(m_vitaleReader->system, true, presenceDelay);
}

void EmbeddedLibrary::waitForRemoval()
{
    m_readers->waitForCard(m_vitaleReader->system, false, presenceDelay);
}

void EmbeddedLibrary::waitForTurn()
{
    m_readers->pause(turnDelay);
}

void EmbeddedLibrary::waitForService()
{
    m_readers->pause(turnDelay);
    findReaderAnew();
}

void EmbeddedLibrary::findReaderAnew()
{
    const auto names = m_readers->names();
    if (!names)
        return;
    // A reconnected reader may have another number.
    const QList<ReaderName> known = readerNames(*names);
    auto found = std::ranges::find(known, m_vitaleReader->shown, &ReaderName::shown);
    if (found == known.end())
        found = std::ranges::find(known, m_vitaleReader->model, &ReaderName::model);
    if (found != known.end())
        m_vitaleReader = *found;
}

QString EmbeddedLibrary::waitsFor() const
{
    // Connecting waits only for another program's transaction.
    return m_isConnecting ? ::hint(CardFault::ReaderBusy) : QString();
}
