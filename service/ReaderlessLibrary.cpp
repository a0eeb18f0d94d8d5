#include "service/ReaderlessLibrary.h"

#include "service/LibraryVersions.h"

using namespace Qt::StringLiterals;

std::optional<LibraryKind> ReaderlessLibrary::initialise(AccessMode mode)
{
    return mode == AccessMode::System ? LibraryKind::System : LibraryKind::Embedded;
}

QStringList ReaderlessLibrary::readers()
{
    return {};
}

bool ReaderlessLibrary::chooseReaders(const QString&, const QString&)
{
    return false;
}

QString ReaderlessLibrary::informations()
{
    return informationsDocument({.library = QLatin1StringView(PELMORA_VERSION).toString(),
                                 .cardTable = u"aucune"_s,
                                 .destinationTable = u"aucune"_s,
                                 .authorisationTable = u"aucune"_s});
}

std::expected<QString, ReadResult> ReaderlessLibrary::readCard()
{
    return std::unexpected(ReadResult::CardAbsent);
}
