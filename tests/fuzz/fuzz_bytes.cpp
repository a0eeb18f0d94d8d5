// Decodes the bytes of a card file and finds its coverage and its fund's label, as the simulated reader does.
#include "card/wire/XmlBytes.h"
#include "service/CardCoverage.h"
#include "service/FundTable.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    // The same bytes are read as a fund table, the service's other file.
    FundTable funds;
    [[maybe_unused]] const QStringList skipped = funds.add(QStringLiteral("table"), bytes);
    if (const std::optional<QString> text = decodeXmlBytes(bytes)) {
        if (const std::optional<CardCoverage> coverage = cardCoverage(*text)) [[maybe_unused]]
            const std::optional<QString> label = funds.label(*coverage);
    }
    return 0;
}
