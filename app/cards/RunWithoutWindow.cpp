#include "app/cards/RunWithoutWindow.h"

#include "app/cards/AttestationFiles.h"
#include "app/cards/CardServiceCommand.h"
#include "app/cards/Console.h"
#include "app/cards/PrintCommand.h"
#include "app/cards/SaveCommand.h"
#include "app/models/CardServiceRequests.h"
#include "app/models/CommandLine.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/PageFonts.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "prefs/settings/SiteSettings.h"
#include "prefs/settings/StandardPreferences.h"

#include <QCoreApplication>

#include <array>
#include <functional>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr int failure = 1;

std::shared_ptr<LVitAccess> cardServiceClient(const CommandLine& command, const Bundle& bundle,
                                              const UserDefaults& settings)
{
    LVitAccess::setDefaultCommand(cardServiceCommand(command, bundle));
    std::shared_ptr<LVitAccess> client = LVitAccess::defaultInstance();
    setAccessModeFromSettings(*client, settings);
    return client;
}

using CommandPtr = std::unique_ptr<CardsCommand>;
using CommandMaker = std::function<std::expected<CommandPtr, QString>(PageOptions, SchemeLogos&, const PageFonts&)>;

/// Brings the card service up, and has the card in the reader taken. Returns when that is done.
void takeCardInReader(const std::shared_ptr<LVitAccess>& client, CardsCommand& cards)
{
    const auto take = [&cards](const std::expected<CardRecord, Error>& record) {
        cards.takeCard(record);
        QCoreApplication::quit();
    };
    bindCardService(*client, [client, take](const BindOutcome& outcome) {
        if (outcome)
            readCard(*client, take);
        else
            take(std::unexpected(outcome.error()));
    });
    QCoreApplication::exec();
}

// The command that was made sees the card files or the card in the reader.
int runWithoutWindow(const CommandLine& command, char* programName, const CommandMaker& makeCommand)
{
    std::array<char*, 2> arguments{programName, nullptr};
    int count = 1;
    const QCoreApplication application(count, arguments.data());

    // Nothing is stored: a run without a window leaves the user's settings as they are.
    UserDefaults settings(UserDefaults::standardFilePath());
    registerStandardPreferences(settings);
    useSiteSettings(settings);
    const Bundle bundle = Bundle::mainBundle();
    const std::expected<PageFonts, Error> fonts = PageFonts::load(bundle);
    if (!fonts) {
        Console::complain(fonts.error().localizedDescription());
        return failure;
    }
    SchemeLogos logos(bundle);
    const std::expected<CommandPtr, QString> made = makeCommand(pageOptions(settings), logos, *fonts);
    if (!made) {
        Console::complain(made.error());
        return failure;
    }
    CardsCommand& cards = **made;

    if (!command.cards.isEmpty()) {
        cards.takeCardFiles(command.cards);
        return cards.exitCode();
    }
    takeCardInReader(cardServiceClient(command, bundle, settings), cards);
    return cards.exitCode();
}

} // namespace

int runSave(const CommandLine& command, char* programName)
{
    std::optional<AttestationFiles> files;
    return runWithoutWindow(
        command, programName,
        [&](PageOptions options, SchemeLogos& logos, const PageFonts& fonts) -> std::expected<CommandPtr, QString> {
            files.emplace(command.folder, options, logos, fonts);
            return std::make_unique<SaveCommand>(*files);
        });
}

int runPrint(const CommandLine& command, char* programName)
{
    return runWithoutWindow(
        command, programName,
        [](PageOptions options, SchemeLogos& logos, const PageFonts& fonts) -> std::expected<CommandPtr, QString> {
            const std::expected<PrintInfo, QString> printer = PrintCommand::defaultPrinter();
            if (!printer)
                return std::unexpected(printer.error());
            return std::make_unique<PrintCommand>(*printer, options, logos, fonts);
        });
}
