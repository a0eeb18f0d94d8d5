#include "app/Runs.h"

#include "app/AttestationFiles.h"
#include "app/CardFile.h"
#include "app/CardReading.h"
#include "app/CardService.h"
#include "app/CommandLine.h"
#include "app/Console.h"
#include "app/PageWindow.h"
#include "app/SaveCommand.h"
#include "attestation/PageFonts.h"
#include "attestation/SchemeLogos.h"
#include "platform/Bundle.h"
#include "prefs/MVSettings.h"
#include "prefs/StandardPreferences.h"

#include <QApplication>
#include <QPointer>

#include <array>
#include <string>

using namespace Qt::StringLiterals;

namespace {

constexpr int failure = 1;

std::shared_ptr<LVitAccess> cardServiceClient(const CommandLine& command, const Bundle& bundle)
{
    LVitAccess::setDefaultCommand(cardServiceCommand(command, bundle));
    std::shared_ptr<LVitAccess> client = LVitAccess::defaultInstance();
    setAccessModeFromSettings(*client);
    return client;
}

// Qt can do without a display when it is told to; otherwise it would end the program without a word for people.
bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

} // namespace

int runSave(const CommandLine& command, char* programName)
{
    // Qt's platform that needs no display.
    std::string option = "-platform";
    std::string platform = "offscreen";
    std::array<char*, 4> arguments{programName, option.data(), platform.data(), nullptr};
    int count = 3;
    const QGuiApplication application(count, arguments.data());

    // Nothing is stored: a run without a window leaves the user's settings as they are.
    MVSettings::registerDefaults(standardPreferences());
    const Bundle bundle = Bundle::mainBundle();
    const std::expected<PageFonts, Error> fonts = PageFonts::load(bundle);
    if (!fonts) {
        Console::complain(fonts.error().localizedDescription());
        return failure;
    }
    SchemeLogos logos(bundle);
    const AttestationFiles files(command.folder, logos, *fonts);
    SaveCommand saving(files);

    if (!command.cards.isEmpty()) {
        saving.saveCardFiles(command.cards);
        return saving.exitCode();
    }
    readCard(cardServiceClient(command, bundle), [&saving](const std::expected<CardRecord, Error>& record) {
        saving.saveCard(record);
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    return saving.exitCode();
}

int runWindow(const CommandLine& command, int argc, char** argv)
{
    if (!hasDisplay()) {
        Console::complain(u"il n’y a pas d’écran où ouvrir une fenêtre."_s);
        return failure;
    }
    const QApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"Pelmora"_s);
    setStandardPreferences();

    const Bundle bundle = Bundle::mainBundle();
    const std::expected<PageFonts, Error> fonts = PageFonts::load(bundle);
    if (!fonts) {
        Console::complain(fonts.error().localizedDescription());
        return failure;
    }
    SchemeLogos logos(bundle);
    PageWindow window(logos, *fonts);
    window.show();

    if (!command.cards.isEmpty()) {
        window.showCard(loadCardFile(command.cards.first()));
    } else {
        const auto showCard = [page = QPointer(&window)](const std::expected<CardRecord, Error>& record) {
            if (page)
                page->showCard(record);
        };
        readCard(cardServiceClient(command, bundle), showCard);
    }
    return QApplication::exec();
}
