#include "app/cards/SaveCommand.h"

#include "app/cards/AttestationFiles.h"

std::expected<CardOutcome, Error> SaveCommand::handle(const CardSource& source, const CardRecord& record)
{
    const std::expected<QString, SaveFailure> path = m_files.save(record);
    if (!path)
        return std::unexpected(path.error().error(source.prefix()));
    return CardOutcome{*path, {{QLatin1StringView("file"), jsonPath(*path)}}};
}
