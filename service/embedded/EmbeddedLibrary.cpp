#include "service/embedded/EmbeddedLibrary.h"

#include "service/LibraryVersions.h"
#include "service/ServiceLog.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// PC/SC looks into its readers every 400 ms: a card that was put in, or taken out, just before is not known yet.
constexpr std::chrono::milliseconds presenceDelay = 500ms;
// Another program that reads the card for itself is soon done; one that keeps it is not waited for.
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

} // namespace

const std::array<EmbeddedLibrary::Remedy, 6> EmbeddedLibrary::remedies{{
    {.fault = CardFault::CardAbsent, .attempts = 1, .prepare = &EmbeddedLibrary::waitForCard},
    {.fault = CardFault::CardGoneUnheard, .attempts = 1, .prepare = &EmbeddedLibrary::waitForRemoval},
    {.fault = CardFault::ReaderBusy, .attempts = turnAttempts, .prepare = &EmbeddedLibrary::waitForTurn},
    {.fault = CardFault::ReaderUnknown, .attempts = 1, .prepare = &EmbeddedLibrary::findReaderAnew},
    {.fault = CardFault::CardReset, .attempts = 1, .prepare = nullptr},
    {.fault = CardFault::ServiceLost, .attempts = 1, .prepare = nullptr},
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
    if (!m_vitaleReader)
        return std::unexpected(ReadResult::ReaderFault);
    std::expected<QString, CardFailure> document = readPatiently();
    if (document)
        return *std::move(document);
    logLine(u"lecteur « %1 » : %2"_s.arg(m_vitaleReader->shown, explanationOf(document.error())));
    const auto* gap = std::get_if<CardGap>(&document.error());
    return std::unexpected(gap != nullptr ? resultOf(*gap) : readResult(std::get<CardFault>(document.error())));
}

QList<ReaderName> EmbeddedLibrary::namedReaders()
{
    const std::expected<QList<QByteArray>, CardFault> names = m_readers->names();
    if (names)
        return readerNames(*names);
    logLine(u"liste des lecteurs : %1"_s.arg(describe(names.error())));
    return {};
}

std::expected<QString, CardFailure> EmbeddedLibrary::readPatiently()
{
    std::array<int, remedies.size()> attempts{};
    for (;;) {
        std::expected<QString, CardFailure> document = readOnce();
        const CardFault* fault = document ? nullptr : std::get_if<CardFault>(&document.error());
        if (fault == nullptr)
            return document;
        const auto* remedy = std::ranges::find(remedies, *fault, &Remedy::fault);
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
    const std::expected<std::unique_ptr<CardTransport>, CardFault> card = m_readers->connect(m_vitaleReader->system);
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

void EmbeddedLibrary::findReaderAnew()
{
    // A reader that was unplugged and is back may bear another number.
    for (const ReaderName& reader : namedReaders()) {
        if (reader.shown == m_vitaleReader->shown)
            m_vitaleReader = reader;
    }
}
