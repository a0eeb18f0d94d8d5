#include "app/cards/RunWithoutWindow.h"

#include "app/cards/AttestationFiles.h"
#include "app/cards/CardServiceCommand.h"
#include "app/cards/PrintCommand.h"
#include "app/cards/ProgramStart.h"
#include "app/cards/ReadCommand.h"
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

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

std::shared_ptr<LVitAccess> cardServiceClient(const CommandLine& command, const Bundle& bundle,
                                              const UserDefaults& settings)
{
    LVitAccess::setDefaultCommand(cardServiceCommand(command, bundle));
    std::shared_ptr<LVitAccess> client = LVitAccess::defaultInstance();
    setAccessModeFromSettings(*client, settings);
    return client;
}

using CommandPtr = std::unique_ptr<CardsCommand>;
using CommandMaker = std::function<std::expected<CommandPtr, Error>(PageOptions, SchemeLogos&, const PageFonts&)>;

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

/// What a run without a window needs.
class BareRun
{
public:
    // Nothing is stored: a run without a window leaves the user's settings as they are.
    BareRun(const CommandLine& command, char* programName)
        : m_command(command)
        , m_arguments{programName, nullptr}
        , m_settings(UserDefaults::standardFilePath())
    {
        registerStandardPreferences(m_settings);
        useSiteSettings(m_settings);
    }

    [[nodiscard]] const Bundle& bundle() const { return m_bundle; }
    [[nodiscard]] const UserDefaults& settings() const { return m_settings; }

    /// Has the command take the card files or the card in the reader. Gives the exit code.
    [[nodiscard]] int take(CardsCommand& cards) const
    {
        if (m_command.cards.isEmpty())
            takeCardInReader(cardServiceClient(m_command, m_bundle, m_settings), cards);
        else
            cards.takeCardFiles(m_command.cards);
        return cards.finish();
    }

private:
    const CommandLine& m_command;
    std::array<char*, 2> m_arguments;
    int m_count = 1;
    const QCoreApplication m_application{m_count, m_arguments.data()};
    UserDefaults m_settings;
    const Bundle m_bundle = Bundle::mainBundle();
};

std::optional<CardResults> resultsOf(const CommandLine& command, const QString& name)
{
    return command.isJson ? std::optional<CardResults>(name) : std::nullopt;
}

/// Makes attestations, with the command that is made for that.
int makeAttestations(const CommandLine& command, char* programName, const std::optional<CardResults>& results,
                     const CommandMaker& makeCommand)
{
    const BareRun run(command, programName);
    const std::expected<PageFonts, Error> fonts = PageFonts::load(run.bundle());
    if (!fonts)
        return failWithoutCards(results, fonts.error());
    SchemeLogos logos(run.bundle());
    const std::expected<CommandPtr, Error> made = makeCommand(pageOptions(run.settings()), logos, *fonts);
    if (!made)
        return failWithoutCards(results, made.error());
    return run.take(**made);
}

} // namespace

int runSave(const CommandLine& command, char* programName)
{
    const std::optional<CardResults> results = resultsOf(command, u"save"_s);
    std::optional<AttestationFiles> files;
    return makeAttestations(
        command, programName, results,
        [&](PageOptions options, SchemeLogos& logos, const PageFonts& fonts) -> std::expected<CommandPtr, Error> {
            files.emplace(command.folder, options, logos, fonts);
            return std::make_unique<SaveCommand>(results, *files);
        });
}

int runPrint(const CommandLine& command, char* programName)
{
    const std::optional<CardResults> results = resultsOf(command, u"print"_s);
    return makeAttestations(
        command, programName, results,
        [&](PageOptions options, SchemeLogos& logos, const PageFonts& fonts) -> std::expected<CommandPtr, Error> {
            const std::expected<PrintInfo, Error> printer = PrintCommand::defaultPrinter();
            if (!printer)
                return std::unexpected(printer.error());
            return std::make_unique<PrintCommand>(results, *printer, options, logos, fonts);
        });
}

int runRead(const CommandLine& command, char* programName)
{
    if (!command.isForced && isatty(STDOUT_FILENO) == 1) {
        return refuseArguments(u"--read n’écrit pas les données d’un patient dans un terminal ; envoyez sa sortie à un "
                               "programme ou dans un fichier, ou ajoutez --force."_s);
    }
    ReadCommand cards(CardResults(u"read"_s));
    return BareRun(command, programName).take(cards);
}
