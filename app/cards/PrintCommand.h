#pragma once

#include "app/cards/CardsCommand.h"
#include "attestation/page/PageOptions.h"
#include "attestation/page/PrintInfo.h"

class PageFonts;
class SchemeLogos;

/// "pelmora --print": prints attestations without a window and without a question, each as a job of its own. Waits for
/// the print server. Main thread; the logos and the fonts must outlive it.
class PrintCommand final : public CardsCommand
{
public:
    PrintCommand(std::optional<CardResults> results, PrintInfo info, PageOptions options, SchemeLogos& logos,
                 const PageFonts& fonts);

    /// The user's default printer with its own settings.
    [[nodiscard]] static std::expected<PrintInfo, Error> defaultPrinter();

protected:
    [[nodiscard]] std::expected<CardOutcome, Error> handle(const CardSource& source, const CardRecord& record) override;

private:
    PrintInfo m_info;
    PageOptions m_options;
    SchemeLogos& m_logos;
    const PageFonts& m_fonts;
};
