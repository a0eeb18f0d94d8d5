#include "app/cards/ReadCommand.h"

#include "app/models/RecordEntries.h"
#include "card/CardKeys.h"

using namespace Qt::StringLiterals;

namespace {

QJsonObject jsonOfRecord(const CardRecord& record)
{
    QVariantMap entries = entriesOfRecord(record);
    // The whole document says the same again.
    entries.remove(CardKey::xmlString.toString());
    return QJsonObject::fromVariantMap(entries);
}

} // namespace

std::expected<CardOutcome, Error> ReadCommand::handle(const CardSource& /*source*/, const CardRecord& record)
{
    return CardOutcome{{}, {{"record"_L1, jsonOfRecord(record)}}};
}
