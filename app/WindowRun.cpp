#include "app/WindowRun.h"

#include "app/AppDelegate.h"
#include "app/WindowRequests.h"
#include "app/cards/CardServiceCommand.h"
#include "app/cards/Console.h"
#include "app/desktop/ActivationToken.h"
#include "app/desktop/ColorScheme.h"
#include "app/desktop/InstanceMessage.h"
#include "app/desktop/ReopenService.h"
#include "app/desktop/SingleInstance.h"
#include "app/desktop/TerminationSignals.h"
#include "app/models/CommandLine.h"
#include "app/windows/MainWindow.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/PageFonts.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "platform/gui/ApplicationNames.h"
#include "platform/gui/FrenchTexts.h"
#include "prefs/settings/SiteSettings.h"

#include <QApplication>

#include <algorithm>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

bool hasVisibleWindows()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::ranges::any_of(windows,
                               [](const QWidget* window) { return window->isVisible() && !window->isMinimized(); });
}

// Requests from outside: later starts, the desktop, signals.
void connectOutside(AppDelegate& delegate, SingleInstance& instance, ReopenService& service,
                    const TerminationSignals& termination)
{
    const auto reopen = [&delegate] {
        const bool visible = hasVisibleWindows();
        // A visible window comes to the front; the delegate shows a hidden one.
        if (visible)
            delegate.showMainWindow();
        delegate.applicationShouldHandleReopen(visible);
    };
    const auto open = [&delegate](const QString& path) {
        delegate.showMainWindow();
        delegate.loadXMLFile(path);
    };
    const auto act = [&delegate](DesktopAction action) { runDesktopAction(action, delegate); };
    QObject::connect(&instance, &SingleInstance::reopenRequested, &delegate, reopen);
    QObject::connect(&instance, &SingleInstance::openRequested, &delegate, open);
    QObject::connect(&instance, &SingleInstance::actionRequested, &delegate, act);
    QObject::connect(&service, &ReopenService::reopenRequested, &delegate, reopen);
    QObject::connect(&service, &ReopenService::openRequested, &delegate, open);
    QObject::connect(&service, &ReopenService::actionRequested, &delegate, act);
    QObject::connect(&termination, &TerminationSignals::terminationRequested, &delegate, &AppDelegate::terminate);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &delegate, &AppDelegate::applicationWillTerminate);
}

int runApplication(const CommandLine& command, const Bundle& bundle, SingleInstance& instance)
{
    const std::expected<PageFonts, Error> fonts = PageFonts::load(bundle);
    if (!fonts) {
        Console::complain(fonts.error().localizedDescription());
        return EXIT_FAILURE;
    }
    UserDefaults settings(UserDefaults::standardFilePath());
    useSiteSettings(settings);
    SchemeLogos logos(bundle);
    LVitAccess::setDefaultCommand(cardServiceCommand(command, bundle));
    MainWindow window(bundle, MainWindow::Appearance::AtOnce);
    AppDelegate delegate({bundle, settings, logos, *fonts, window}, LVitAccess::defaultInstance());
    ReopenService service;
    const TerminationSignals termination;
    connectOutside(delegate, instance, service, termination);

    delegate.awakeFromNib();
    delegate.applicationDidFinishLaunching();
    instance.startListening();
    service.start();
    ColorScheme colors;
    colors.start();
    if (!command.cards.isEmpty())
        delegate.loadXMLFile(command.cards.first());
    if (command.desktopAction)
        runDesktopAction(*command.desktopAction, delegate);
    return QApplication::exec();
}

} // namespace

int runWindow(const CommandLine& command, int argc, char** argv)
{
    const QApplication application(argc, argv);
    nameApplication(u"" PELMORA_VERSION ""_s);
    installFrenchTexts();
    const Bundle bundle = Bundle::mainBundle();
    if (AppDelegate::applicationWillFinishLaunching(bundle) == MoveOutcome::Ends)
        return 0;

    SingleInstance instance(SingleInstance::keyFor(command));
    const std::optional<QString> card = command.cards.isEmpty() ? std::nullopt : std::optional(command.cards.first());
    InstanceMessage message = InstanceMessage::forCard(card);
    message.action = command.desktopAction;
    message.activationToken = ActivationToken::ofThisStart();
    switch (instance.claim(message)) {
    case SingleInstance::Claim::First:
        break;
    case SingleInstance::Claim::AlreadyRunning:
        return 0;
    case SingleInstance::Claim::NoAnswer:
        Console::complain(SingleInstance::noAnswerText());
        return EXIT_FAILURE;
    }
    return runApplication(command, bundle, instance);
}
