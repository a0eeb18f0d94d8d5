#include "app/cards/PrintCommand.h"

#include "attestation/document/AttestationPdf.h"
#include "attestation/page/PageOfCard.h"
#include "platform/Bundle.h"
#include "platform/print/PrintMessages.h"
#include "platform/print/PrintServer.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Among the negative numbers, as the print server's own are positive; a documented number.
constexpr int noDefaultPrinter = -3;

PrintAnswer answerOfServer(const PrintRequest& request)
{
    return PrintServer(Bundle::mainBundle().pathForProgram(u"pelmora-print"_s)).askAndWait(request);
}

} // namespace

PrintCommand::PrintCommand(std::optional<CardResults> results, PrintInfo info, PageOptions options, SchemeLogos& logos,
                           const PageFonts& fonts)
    : CardsCommand(std::move(results))
    , m_info(std::move(info))
    , m_options(options)
    , m_logos(logos)
    , m_fonts(fonts)
{
}

std::expected<PrintInfo, Error> PrintCommand::defaultPrinter()
{
    const PrintAnswer queues = answerOfServer(std::nullopt);
    if (!queues)
        return std::unexpected(queues.error());
    const auto chosen = std::ranges::find(*queues, true, &PrintQueue::isDefault);
    if (chosen == queues->cend())
        return std::unexpected(
            Error(printErrorDomain.toString(), noDefaultPrinter, u"aucune imprimante par défaut n’est définie."_s));
    return PrintInfo::defaultsOf(*chosen);
}

std::expected<CardOutcome, Error> PrintCommand::handle(const CardSource& /*source*/, const CardRecord& record)
{
    const auto pdf = renderAttestationPdf(pageOfCard(record, m_options, m_logos), m_fonts, m_info.sheet);
    if (!pdf)
        return std::unexpected(pdf.error());
    const PrintAnswer printed = answerOfServer(m_info.job(*pdf));
    if (!printed)
        return std::unexpected(printed.error());
    return CardOutcome{{}, {{"printer"_L1, m_info.queue}}};
}
