#include "app/SaveCommand.h"

#include "app/AttestationFiles.h"
#include "app/CardFile.h"
#include "app/Console.h"

using namespace Qt::StringLiterals;

void SaveCommand::saveCardFiles(const QStringList& paths)
{
    for (const QString& path : paths) {
        if (const std::expected<CardRecord, Error> record = loadCardFile(path))
            save(*record);
        else
            fail(path + " : "_L1 + record.error().localizedDescription());
    }
}

void SaveCommand::saveCard(const std::expected<CardRecord, Error>& record)
{
    if (record)
        save(*record);
    else
        fail(record.error().localizedDescription());
}

void SaveCommand::save(const CardRecord& record)
{
    const std::expected<QString, SaveFailure> path = m_files.save(record);
    if (!path)
        fail(path.error().description());
    else if (!Console::print(*path + u'\n'))
        fail(u"la sortie standard ne peut pas être écrite."_s);
}

void SaveCommand::fail(const QString& reason)
{
    m_failed = true;
    Console::complain(reason);
}
