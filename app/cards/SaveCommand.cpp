#include "app/cards/SaveCommand.h"

#include "app/cards/AttestationFiles.h"
#include "app/cards/Console.h"

using namespace Qt::StringLiterals;

std::expected<void, QString> SaveCommand::handle(const CardRecord& record)
{
    const std::expected<QString, SaveFailure> path = m_files.save(record);
    if (!path)
        return std::unexpected(path.error().description());
    if (!Console::print(*path + u'\n'))
        return std::unexpected(u"la sortie standard ne peut pas être écrite."_s);
    return {};
}
