#include "app/models/CardSummary.h"

#include "card/CardKeys.h"
#include "platform/ObjectText.h"

using namespace Qt::StringLiterals;

QString cardSummary(const std::optional<CardRecord>& record)
{
    if (!record)
        return {};
    const qsizetype count = record->beneficiaries().size();
    return u"%1 %2\n%3\n%4 bénéficiaire%5"_s.arg(
        objectText(record->text(CardKey::lastName)), objectText(record->text(CardKey::firstName)),
        objectText(record->text(CardKey::ssn)), QString::number(count), count < 2 ? QString() : u"s"_s);
}
