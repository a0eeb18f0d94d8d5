// Parses a card's text: the result is a record or an error. The service has another parser for the insured person's
// coverage, which must find the same.
#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "service/CardCoverage.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const std::optional<CardCoverage> coverage = cardCoverage(text);
    const std::expected<XmlDocument, Error> document = XmlDocument::fromText(text);
    if (!document)
        return 0;
    const std::expected<CardRecord, Error> record = parseCardDocument(&*document);
    if (!record)
        return 0;
    if (record->beneficiaries().isEmpty())
        std::abort();
    if (coverage && (record->text(CardKey::regimeCode).value_or(QString()) != coverage->scheme ||
                     record->text(CardKey::fundCode).value_or(QString()) != coverage->fund))
        std::abort();
    return 0;
}
