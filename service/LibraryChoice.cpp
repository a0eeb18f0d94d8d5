#include "service/LibraryChoice.h"

#include "service/LibraryVersions.h"

using namespace Qt::StringLiterals;

LibraryChoice::LibraryChoice(std::unique_ptr<ReadingLibrary> installed, std::unique_ptr<ReadingLibrary> embedded)
    : m_installed(std::move(installed))
    , m_embedded(std::move(embedded))
    , m_inUse(m_embedded.get())
{
}

std::optional<LibraryKind> LibraryChoice::initialise(LibraryMode mode)
{
    m_inUse = m_installed.get();
    std::optional<LibraryKind> kind = m_installed->initialise(mode);
    if (!kind && mode != LibraryMode::System) {
        m_inUse = m_embedded.get();
        kind = m_embedded->initialise(mode);
    }
    if (!kind)
        m_inUse = nullptr;
    return kind;
}

QStringList LibraryChoice::readers()
{
    return m_inUse != nullptr ? m_inUse->readers() : QStringList();
}

bool LibraryChoice::chooseReaders(const QString& vitaleReader, const QString& professionalReader)
{
    return m_inUse != nullptr && m_inUse->chooseReaders(vitaleReader, professionalReader);
}

QString LibraryChoice::informations()
{
    if (m_inUse != nullptr)
        return m_inUse->informations();
    return informationsDocument(
        {.library = u"aucune"_s, .cardTable = {}, .destinationTable = {}, .authorisationTable = {}});
}

std::expected<QString, ReadResult> LibraryChoice::readCard()
{
    if (m_inUse == nullptr)
        return std::unexpected(ReadResult::Unusable);
    return m_inUse->readCard();
}

std::unique_ptr<ReaderWatch> LibraryChoice::watchReader(const ReaderReport& report)
{
    return m_inUse != nullptr ? m_inUse->watchReader(report) : nullptr;
}

QString LibraryChoice::hint() const
{
    return m_inUse != nullptr ? m_inUse->hint() : QString();
}

QString LibraryChoice::waitsFor() const
{
    return m_inUse != nullptr ? m_inUse->waitsFor() : QString();
}
