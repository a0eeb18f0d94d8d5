#include "service/installed/InstalledLibrary.h"

#include "card/wire/TextDecoding.h"
#include "service/CardCoverage.h"
#include "service/ServiceLog.h"
#include "service/installed/ClearedText.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

ReadResult readResult(int result)
{
    constexpr std::array known{ReadResult::CardAbsent, ReadResult::ReaderFault, ReadResult::CardChanged,
                               ReadResult::ReadError, ReadResult::CardMute};
    if (result == PELMORA_READING_TOO_LONG)
        return ReadResult::ReadError;
    const auto* found = std::ranges::find(known, static_cast<ReadResult>(result));
    return found == known.end() ? ReadResult::Unusable : *found;
}

void logRefusal(QLatin1StringView function, const QString& reason)
{
    logLine(u"bibliothèque de lecture installée : %1 : %2"_s.arg(function, reason));
}

void logResult(QLatin1StringView function, int result)
{
    logRefusal(function, u"résultat %1"_s.arg(result));
}

} // namespace

SystemPlace InstalledLibrary::standardPlace()
{
    return {.root = "/", .relative = "usr/lib/pelmora/reading-library.so", .owner = 0};
}

InstalledLibrary::InstalledLibrary(SystemPlace place)
    : m_place(std::move(place))
{
}

InstalledLibrary::~InstalledLibrary()
{
    close();
}

std::optional<LibraryKind> InstalledLibrary::initialise(LibraryMode mode)
{
    close();
    if (mode == LibraryMode::Embedded || !load() || !open())
        return std::nullopt;
    return LibraryKind::System;
}

bool InstalledLibrary::load()
{
    if (m_functions)
        return true;
    const std::expected<InstalledFunctions, SystemFileFault> loaded = loadInstalledFunctions(m_place);
    if (loaded)
        m_functions = *loaded;
    else if (!loaded.error().isAbsent)
        logLine(u"bibliothèque de lecture installée refusée : "_s + loaded.error().reason);
    return m_functions.has_value();
}

bool InstalledLibrary::open()
{
    const int result = m_functions->open();
    m_isOpen = result == PELMORA_READING_OK;
    if (!m_isOpen)
        logResult("pelmora_reading_open"_L1, result);
    return m_isOpen;
}

void InstalledLibrary::close()
{
    if (m_isOpen)
        m_functions->close();
    m_isOpen = false;
}

QList<ReaderName> InstalledLibrary::namedReaders() const
{
    constexpr QLatin1StringView function("pelmora_reading_readers");
    if (!m_isOpen)
        return {};
    ClearedText text(ReadingRoom::readers);
    if (const int result = m_functions->readers(text.forLibrary()); result != PELMORA_READING_OK) {
        logResult(function, result);
        return {};
    }
    const std::optional<QByteArrayView> written = text.written();
    if (!written || !decodeUtf8(*written) || written->contains('\0')) {
        logRefusal(function, u"noms illisibles"_s);
        return {};
    }
    QList<QByteArray> names;
    for (const QByteArray& name : written->toByteArray().split('\n')) {
        if (!name.isEmpty() && !names.contains(name))
            names << name;
    }
    return readerNames(names);
}

QStringList InstalledLibrary::readers()
{
    QStringList shown;
    for (const ReaderName& name : namedReaders())
        shown << name.shown;
    return shown;
}

bool InstalledLibrary::chooseReaders(const QString& vitaleReader, const QString& professionalReader)
{
    const QList<ReaderName> known = namedReaders();
    const auto vitale = std::ranges::find(known, vitaleReader, &ReaderName::shown);
    const auto professional = std::ranges::find(known, professionalReader, &ReaderName::shown);
    if (vitale == known.end() || professional == known.end())
        return false;
    const int result = m_functions->chooseReaders(vitale->system.constData(), professional->system.constData());
    if (result != PELMORA_READING_OK)
        logResult("pelmora_reading_choose_readers"_L1, result);
    return result == PELMORA_READING_OK;
}

QString InstalledLibrary::version(pelmora_reading_component component) const
{
    constexpr QLatin1StringView function("pelmora_reading_version");
    ClearedText text(ReadingRoom::version);
    if (const int result = m_functions->version(component, text.forLibrary()); result != PELMORA_READING_OK) {
        logResult(function, result);
        return {};
    }
    const std::optional<QByteArrayView> written = text.written();
    const std::optional<QString> version = written ? decodeUtf8(*written) : std::nullopt;
    // Characters that XML does not allow or that are not printable.
    if (!version || std::ranges::any_of(*version, [](QChar unit) { return !unit.isPrint() && !unit.isSurrogate(); })) {
        logRefusal(function, u"texte illisible"_s);
        return {};
    }
    return *version;
}

LibraryVersions InstalledLibrary::versions() const
{
    if (!m_isOpen)
        return {};
    return {.library = version(PELMORA_READING_LIBRARY),
            .cardTable = version(PELMORA_READING_CARD_TABLE),
            .destinationTable = version(PELMORA_READING_DESTINATION_TABLE),
            .authorisationTable = version(PELMORA_READING_AUTHORISATION_TABLE)};
}

QString InstalledLibrary::informations()
{
    return informationsDocument(versions());
}

std::expected<QString, ReadResult> InstalledLibrary::readCard()
{
    constexpr QLatin1StringView function("pelmora_reading_read_card");
    if (!m_isOpen)
        return std::unexpected(ReadResult::Unusable);
    ClearedText text(ReadingRoom::card);
    if (const int result = m_functions->readCard(text.forLibrary()); result != PELMORA_READING_OK) {
        if (result != PELMORA_READING_CARD_ABSENT)
            logResult(function, result);
        return std::unexpected(readResult(result));
    }
    const std::optional<QByteArrayView> written = text.written();
    std::optional<QString> card = written ? decodeUtf8(*written) : std::nullopt;
    if (!card || !cardCoverage(*card)) {
        logRefusal(function, !written ? u"longueur impossible"_s
                             : !card  ? u"le texte n’est pas en UTF-8"_s
                                      : u"le texte n’est pas du XML sûr"_s);
        return std::unexpected(ReadResult::ReadError);
    }
    return *std::move(card);
}
