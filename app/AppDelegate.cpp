#include "app/AppDelegate.h"

#include "app/WindowRequests.h"
#include "app/models/CardFile.h"
#include "app/models/OutsideFolders.h"
#include "app/models/ReaderHint.h"
#include "app/models/StatusMenu.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "attestation/viewer/MVScrollView.h"
#include "card/client/LVitAccess.h"
#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/settings/StandardPreferences.h"
#include "support/MXLog.h"
#include "support/move/MoveAtLaunch.h"

#include <QAction>
#include <QGuiApplication>

#include <utility>

using namespace Qt::StringLiterals;
using Occupied = CardOccupation::By;

AppDelegate::AppDelegate(const Surroundings& surroundings, std::shared_ptr<LVitAccess> client)
    : m_bundle(surroundings.bundle)
    , m_settings(surroundings.settings)
    , m_logos(surroundings.logos)
    , m_fonts(surroundings.fonts)
    , m_window(surroundings.window)
    , m_lvit(std::move(client))
    , m_reading(m_lvit, m_settings, *this)
    , m_printDesk(m_settings, m_logos, m_fonts, m_bundle.pathForProgram(u"pelmora-print"_s))
    , m_occupation(m_reading, m_printDesk)
    , m_readerDesk({m_settings, m_window, m_reading, m_occupation})
    , m_front(m_window, m_printDesk)
    , m_refusal(m_occupation, m_printDesk, m_front)
    , m_writing(m_window)
    , m_desktop(m_bundle, m_front)
    , m_saving({m_settings, m_logos, m_fonts, m_front, m_writing})
    , m_currentVitale(m_window, m_front)
    , m_statusItem(m_settings, m_bundle)
    , m_preferences({m_bundle, m_settings, m_window, *this})
    , m_recents(m_settings)
    , m_recentsMenu(m_recents, m_window)
{
    m_printDesk.setPermission([this] { return permitPrint(); });
    m_printDesk.setFileNaming([this](const CardRecord& record) { return m_saving.pathFor(record); });
    connect(&m_printDesk, &PrintDesk::saved, &m_window.panel(), &CardPanel::setSaved);
    connect(&m_printDesk, &PrintDesk::sent, &m_window.panel(),
            [this](const QString& queue) { m_window.panel().setSent(queue, QDateTime::currentDateTime()); });
    // The notice was about the write.
    connect(&m_writing, &WritingDesk::ended, this, [this] { m_window.panel().setNotice(QString()); });
    connect(&m_statusItem, &StatusItemKeeper::executeAction, this, &AppDelegate::executeAction);
    connect(&m_statusItem, &StatusItemKeeper::showRequested, this, &AppDelegate::showMainWindow);
    connect(&m_statusItem, &StatusItemKeeper::lost, this, [this] { m_front.bringBack(); });
    connect(&m_preferences, &PreferencesDesk::failed, this, &AppDelegate::presentError);
    connect(&m_preferences, &PreferencesDesk::forgettingChanged, this, &AppDelegate::followSettings);
    connect(&m_preferences, &PreferencesDesk::diagnosisRequested, this,
            [this](QWidget* window) { showDiagnosis(*window); });
    connect(&m_readerDesk, &ReaderDesk::forgetDue, this, &AppDelegate::forgetCard);
    connect(&m_saving, &AttestationSaving::saved, &m_recentsMenu, &RecentsMenu::add);
    connect(&m_fileChoice, &CardFileChoice::chosen, this, [this](const QString& path) { loadXMLFile(path); });
    connect(&m_front.alerts(), &AlertQueue::helpRequested, this,
            [this](const QString& topic) { m_desktop.showHelp(topic); });
    connect(&m_recentsMenu, &RecentsMenu::openRequested, this, &AppDelegate::openRecentAttestation);
    connect(&m_recentsMenu, &RecentsMenu::clearRequested, this, &AppDelegate::clearRecentsMenu);
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::awakeFromNib()
{
    connectRequests(m_window, *this);
    m_window.setClosePolicy(
        [this] { return m_statusItem.isSeen() ? MainWindow::ClosePolicy::Hide : MainWindow::ClosePolicy::Iconify; });
    m_window.initUI();
}

MoveOutcome AppDelegate::applicationWillFinishLaunching(const Bundle& bundle)
{
    const QVariant level = bundle.objectForInfoDictionaryKey(u"MVDebugLevel");
    if (level.isValid())
        MXLog::defaultLogger().setLogLevel(level.toUInt());
    return moveToApplicationsFolderIfNecessary();
}

void AppDelegate::applicationDidFinishLaunching()
{
    // Shown and sent to the display first, because the next steps take time.
    m_window.show();
    QGuiApplication::sync();
    auto viewer = std::make_unique<MVAttestationWindowController>(m_settings, m_logos, m_fonts, m_printDesk);
    connect(viewer.get(), &MVAttestationWindowController::saveRequested, this, &AppDelegate::saveAttestation);
    m_window.addShortcutsTo(*viewer->window());
    m_window.addCopyMenuTo(*viewer->scrollView());
    m_attestationViewer = std::make_unique<FollowingViewer>(std::move(viewer), m_window);
    setObservers();
    checkLogDir();
    checkSedicaDir();
    setStandardPreferences(m_settings);
    updateRecentsMenu();
    followSettings();
    disableUI();
    m_reading.lVitInit();
    m_preferences.initPrefs(m_lvit);
    m_window.updateMenuItem()->setEnabled(validateMenuItem(*m_window.updateMenuItem()));
    showStatusItem();
    m_window.setWindowTitle(u"Pelmora par MORVEL"_s);
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows)
{
    if (!hasVisibleWindows)
        showMainWindow();
    return false;
}

void AppDelegate::setObservers()
{
    const auto failed = [this](const std::optional<Error>& error) {
        if (error)
            presentError(*error);
        disableUI();
    };
    m_bindObserver = std::make_unique<BindObserver>([this] { enableUI(); }, failed);
    m_readerDesk.start(m_lvit);
}

void AppDelegate::enableUI()
{
    m_window.enableTiles();
    setEnabled(true);
    m_window.panel().setNotice(QString());
}

void AppDelegate::setEnabled(bool enabled)
{
    m_enabled = enabled;
    m_window.validateMenuItems([this](const QAction& menuItem) { return validateMenuItem(menuItem); });
}

bool AppDelegate::validateMenuItem(const QAction& menuItem) const
{
    if (&menuItem == m_window.updateMenuItem())
        return m_preferences.canCheckForUpdates();
    return m_enabled || !m_window.isCardAction(menuItem);
}

void AppDelegate::showCard(const CardRecord& record, PanelLine::CardOrigin origin)
{
    m_currentVitale.show(record, origin);
    if (m_attestationViewer)
        m_attestationViewer->follow(record);
    m_readerDesk.cardShown(origin);
}

void AppDelegate::forgetCard()
{
    m_currentVitale.forget();
    m_attestationViewer->forget();
}

void AppDelegate::followSettings()
{
    m_readerDesk.followSettings();
    if (MVSettings::booleanPreferencesForKey(m_settings, Settings::forgetRecents))
        clearRecentsMenu();
}

// The viewer prints its page, which must show the current card.
bool AppDelegate::permitPrint()
{
    if (refuseWhile(CardOccupation::anything))
        return false;
    m_window.panel().beginRequest();
    m_attestationViewer->update();
    return true;
}

void AppDelegate::readVitale(const QObject* sender)
{
    m_readerDesk.unattendedRead().end();
    if (refuseWhile(Occupied::PrintDialog | Occupied::Writing))
        return;
    if (CardFileChoice::areKeysHeld(sender != nullptr))
        loadXMLFile();
    else
        m_reading.readVitale();
}

void AppDelegate::beginSheet(const QString& message)
{
    if (!m_readerDesk.unattendedRead().isRunning())
        m_front.bringBack();
    if (m_readerDesk.unattendedRead().permitsSheet())
        m_window.beginSheet(message);
}

void AppDelegate::presentError(const Error& error)
{
    if (!m_readerDesk.unattendedRead().fail(error))
        m_front.presentError(error);
}

void AppDelegate::cardWasRead(const CardRecord& record)
{
    showCard(record, PanelLine::CardOrigin::Reader);
    m_readerDesk.unattendedRead().succeed();
}

// Does nothing without a card: the read has reported its error.
void AppDelegate::whenCardIsThere(void (AppDelegate::*action)(const CardRecord&))
{
    m_readerDesk.unattendedRead().end();
    if (refuseWhile(Occupied::PrintDialog))
        return;
    m_reading.readVitaleIfNeedWithCompletionHandler([this, action](bool success, const std::optional<Error>&) {
        if (!success || !currentVitale())
            return;
        m_window.panel().beginRequest();
        (this->*action)(*currentVitale());
    });
}

void AppDelegate::whenNothingIsWritten(void (AppDelegate::*action)(const CardRecord&))
{
    if (!refuseWhile(Occupied::Writing))
        whenCardIsThere(action);
}

void AppDelegate::print(const CardRecord& record)
{
    // A waiting read could change the card while the dialog is open.
    if (refuseWhile(Occupied::Reading))
        return;
    m_front.bringBack();
    m_printDesk.print(record, m_front.alerts(), m_window);
}

void AppDelegate::loadXMLFile()
{
    if (refuseWhile(CardOccupation::anything))
        return;
    m_window.panel().beginRequest();
    m_front.bringBack();
    m_fileChoice.begin(m_window, m_saving.folder());
}

void AppDelegate::loadXMLFile(const QString& path)
{
    if (refuseWhile(CardOccupation::anything))
        return;
    m_window.panel().beginRequest();
    const std::expected<CardRecord, Error> record = loadCardFile(path);
    if (!record) {
        presentError(record.error());
        return;
    }
    showCard(*record, PanelLine::CardOrigin::File);
}

void AppDelegate::hideStatusItem()
{
    m_statusItem.hide();
    if (!m_window.isVisible())
        showMainWindow();
}

void AppDelegate::executeAction(const QObject* sender)
{
    const auto* menuItem = qobject_cast<const QAction*>(sender);
    if (!menuItem)
        return;
    const int tag = menuItem->data().toInt();
    if (m_enabled || tag == StatusMenu::QuitTag || tag == StatusMenu::OpenFolderTag)
        runStatusMenuEntry(tag, *this);
    else
        refuse(readerNotReady.toString());
}

void AppDelegate::openRecentAttestation(const QObject* sender)
{
    const auto* menuItem = qobject_cast<const QAction*>(sender);
    if (const std::optional<QString> path = menuItem ? m_recents.pathAt(menuItem->data().toInt()) : std::nullopt)
        m_desktop.openFile(*path);
}

void AppDelegate::preferences()
{
    m_window.panel().setNotice(QString());
    m_preferences.show();
}

void AppDelegate::disableUI()
{
    m_window.disableCardTiles();
    setEnabled(false);
}
