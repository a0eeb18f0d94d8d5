#include "app/AppDelegate.h"

#include "app/desktop/StatusItem.h"
#include "app/models/OutsideFolders.h"
#include "app/windows/MainWindow.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "card/client/BindOutcome.h"
#include "card/client/CardServiceKeys.h"
#include "card/client/LVitAccess.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "platform/files/FileWorker.h"
#include "platform/gui/SavingSheet.h"
#include "platform/gui/WindowActivation.h"
#include "prefs/LVitAccessPrefs.h"
#include "prefs/MVAttestationPrefs.h"
#include "prefs/MVConfigPrefs.h"
#include "prefs/MVPreferences.h"
#include "prefs/MVUpdatePrefs.h"
#include "prefs/settings/StandardPreferences.h"
#include "support/MXLog.h"
#include "support/move/MoveAtLaunch.h"
#include "update/SUUpdater.h"

#include <QFileDialog>
#include <QGuiApplication>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView debugLevelKey{u"MVDebugLevel"};

} // namespace

AppDelegate::AppDelegate(const Surroundings& surroundings, std::shared_ptr<LVitAccess> client)
    : m_bundle(surroundings.bundle)
    , m_settings(surroundings.settings)
    , m_logos(surroundings.logos)
    , m_fonts(surroundings.fonts)
    , m_window(surroundings.window)
    , m_alerts(&surroundings.window)
    , m_lvit(std::move(client))
    , m_reading(m_lvit, m_settings, *this)
    , m_printDesk(m_settings, m_logos, m_fonts)
    , m_recents(m_settings)
{
    m_printDesk.setPermission([this] { return permitPrint(); });
    connect(&FileWorker::shared(), &FileWorker::ended, this, &AppDelegate::writingHasEnded);
}

AppDelegate::~AppDelegate()
{
    applicationWillTerminate();
    delete m_savingSheet;
}

void AppDelegate::awakeFromNib()
{
    connectWindow();
    initUI();
}

MoveOutcome AppDelegate::applicationWillFinishLaunching(const Bundle& bundle)
{
    const QVariant level = bundle.objectForInfoDictionaryKey(debugLevelKey);
    if (level.isValid())
        MXLog::defaultLogger().setLogLevel(level.toUInt());
    return moveToApplicationsFolderIfNecessary();
}

void AppDelegate::applicationDidFinishLaunching()
{
    // Before all that takes time, and not left in a buffer meanwhile: people see the window at once.
    m_window.show();
    QGuiApplication::sync();
    m_attestationViewer = std::make_unique<MVAttestationWindowController>(m_settings, m_logos, m_fonts, m_printDesk);
    setObservers();
    checkLogDir();
    checkSedicaDir();
    setStandardPreferences(m_settings);
    updateRecentsMenu();
    disableUI();
    m_reading.lVitInit();
    initPrefs();
    showStatusItem();
    m_window.setWindowTitle(u"Pelmora par MORVEL"_s);
}

void AppDelegate::applicationWillTerminate()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

bool AppDelegate::applicationShouldHandleReopen(const QObject* sender, bool hasVisibleWindows)
{
    if (!hasVisibleWindows)
        showMainWindow(sender);
    return false;
}

void AppDelegate::showMainWindow(const QObject* /*sender*/)
{
    bringToFront(m_window);
    m_printDesk.bringToFront();
}

void AppDelegate::setObservers()
{
    const auto bound = [this](const Notification& notification) {
        if (!notification.userInfo)
            return;
        if (notification.userInfo->value(BindNotification::status.toString()) == BindNotification::success.toString()) {
            enableUI();
            return;
        }
        if (const std::optional<Error> error = bindError(*notification.userInfo))
            presentError(*error);
        disableUI();
    };
    NotificationCenter::defaultCenter().addObserver(this, BindNotification::name.toString(), bound);
}

void AppDelegate::initPrefs()
{
    m_updater = std::make_unique<SUUpdater>(UpdateConfiguration::fromBundle(m_bundle),
                                            std::make_unique<UserDefaults>(UserDefaults::standardFilePath()));
    MVPreferences::resigterPreferencesPane(std::make_shared<MVConfigPrefs>(m_settings, *this, m_bundle));
    MVPreferences::resigterPreferencesPane(std::make_shared<MVAttestationPrefs>(m_settings, m_bundle));
    MVPreferences::resigterPreferencesPane(std::make_shared<LVitAccessPrefs>(m_settings, m_lvit, m_bundle));
    const auto updatePrefs = std::make_shared<MVUpdatePrefs>(m_bundle);
    updatePrefs->setUpdater(m_updater.get());
    MVPreferences::resigterPreferencesPane(updatePrefs);
}

// Tiles and menu entries ask through the window's signals.
void AppDelegate::connectWindow()
{
    connect(&m_window, &MainWindow::readRequested, this, [this] { readVitale(&m_window); });
    connect(&m_window, &MainWindow::readCancelRequested, this, [this] { m_reading.cancelRead(); });
    connect(&m_window, &MainWindow::viewRequested, this, [this] { viewAttestation(&m_window); });
    connect(&m_window, &MainWindow::printRequested, this, [this] { printAttestation(&m_window); });
    connect(&m_window, &MainWindow::saveRequested, this, [this] { saveAttestation(&m_window); });
    connect(&m_window, &MainWindow::folderRequested, this, [this] { openAttestationsFolder(&m_window); });
    connect(&m_window, &MainWindow::mailRequested, this, [this] { sendComment(&m_window); });
    connect(&m_window, &MainWindow::settingsRequested, this, [this] { preferences(&m_window); });
    connect(&m_window, &MainWindow::helpRequested, this, [this] { showHelp(&m_window); });
    connect(&m_window, &MainWindow::updateRequested, this, [this] { m_updater->checkForUpdates(&m_window); });
    connect(&m_window, &MainWindow::cardFileRequested, this, [this] { loadXMLFile(); });
    connect(&m_window, &MainWindow::cardFileDropped, this, [this](const QString& path) { loadXMLFile(path); });
    connect(&m_window, &MainWindow::cardFileDroppedInVain, this, &AppDelegate::refuseDrop);
    connect(&m_window, &MainWindow::quitRequested, this, &AppDelegate::quit);
    m_window.setClosePolicy([this] {
        return m_statusItem && m_statusItem->hostAvailable() ? MainWindow::ClosePolicy::Hide
                                                             : MainWindow::ClosePolicy::Iconify;
    });
}
