#include "app/cards/CardsCommand.h"

#include "app/cards/Console.h"
#include "app/models/CardFile.h"

using namespace Qt::StringLiterals;

void CardsCommand::takeCardFiles(const QStringList& paths)
{
    for (const QString& path : paths) {
        const std::expected<CardRecord, Error> record = loadCardFile(path);
        if (!record)
            fail(path + " : "_L1 + record.error().localizedDescription());
        else if (const std::expected<void, QString> handled = handle(*record); !handled)
            fail(handled.error());
    }
}

void CardsCommand::takeCard(const std::expected<CardRecord, Error>& record)
{
    if (!record)
        fail(record.error().localizedDescriptionWithDetail());
    else if (const std::expected<void, QString> handled = handle(*record); !handled)
        fail(handled.error());
}

void CardsCommand::fail(const QString& reason)
{
    m_failed = true;
    Console::complain(reason);
}
