#pragma once

#include "app/AttestationSaving.h"
#include "app/CardOccupation.h"
#include "app/DesktopRequests.h"
#include "app/FollowingViewer.h"
#include "app/FrontWindow.h"
#include "app/StatusItemKeeper.h"
#include "app/WritingDesk.h"
#include "app/models/BindObserver.h"
#include "app/models/PanelLine.h"
#include "app/models/ReadWorkflow.h"
#include "app/models/RecentAttestations.h"
#include "app/windows/CardFileChoice.h"
#include "app/windows/MainWindow.h"
#include "app/windows/RecentsMenu.h"
#include "attestation/print/PrintDesk.h"
#include "card/CardRecord.h"
#include "platform/Bundle.h"
#include "prefs/StatusItemControl.h"
#include "support/move/MoveToApplications.h"

#include <QDateTime>
#include <QObject>

#include <memory>
#include <optional>

class LVitAccess;
class PageFonts;
class QAction;
class SchemeLogos;
class SUUpdater;
class UserDefaults;

/// The application's one controller: it owns what lives for the whole run and lets what the user does reach those that
/// do it. Each operation is a few lines over a class of its own. Main thread only.
class AppDelegate final : public QObject, public StatusItemControl, private ReadWorkflowDelegate
{
    Q_OBJECT

public:
    /// What the controller works with; all of it outlives the controller.
    struct Surroundings
    {
        const Bundle& bundle;
        UserDefaults& settings;
        SchemeLogos& logos;
        const PageFonts& fonts;
        MainWindow& window;
    };

    AppDelegate(const Surroundings& surroundings, std::shared_ptr<LVitAccess> client);
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;
    ~AppDelegate() override;

    /// The window is there: its first looks, and its buttons and menus find their operations.
    void awakeFromNib();
    /// The first steps of the start-up, before anything is set up: the log's level, and the question whether the
    /// program is to move to the Applications folder. Waits for the answer; the program may have to end then.
    [[nodiscard]] static MoveOutcome applicationWillFinishLaunching(const Bundle& bundle);
    /// The rest of the start-up sequence, once.
    void applicationDidFinishLaunching();
    /// The controller observes nothing any more.
    void applicationWillTerminate() { m_bindObserver.reset(); }
    /// The program was started again, or asked for: a window that is not visible comes back. Whether the caller is to
    /// do anything else about it: never.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);

    /// Makes the main window the active one, in front of the others, but for a print that asks.
    void showMainWindow() { m_front.show(); }
    /// The user leaves, or the application has to end: once the files that are being written are whole (WritingDesk).
    void quit() { m_writing.quit(); }
    void terminate() { m_writing.terminate(); }

    [[nodiscard]] bool isEnabled() const { return m_enabled; }
    [[nodiscard]] bool isReading() const { return m_reading.isReading(); }

    // What the user can ask for.
    /// The sender is the button or the menu's entry; none when the status item asks.
    void readVitale(const QObject* sender);
    void cancelRead() { m_reading.cancelRead(); }
    void viewAttestation() { whenCardIsThere(&AppDelegate::view); }
    void printAttestation();
    void saveAttestation();
    void openAttestationsFolder() { m_desktop.openFolder(m_saving.folder()); }
    /// The file that the sender, an entry of the recents' menu, stands for.
    void openRecentAttestation(const QObject* sender);
    void clearRecentsMenu() { m_recentsMenu.clear(); }
    void sendComment() { m_desktop.sendComment(); }
    void showHelp() { m_desktop.showHelp(); }
    void preferences();
    void checkForUpdates();
    /// What an entry of the status item's menu stands for, by its tag. Any other sender is ignored.
    void executeAction(const QObject* sender);
    /// Whether an entry of the menu bar can be chosen: those of the card actions once the card service is bound.
    [[nodiscard]] bool validateMenuItem(const QAction& menuItem) const
    {
        return m_enabled || !m_window.isCardAction(menuItem);
    }

    /// Lets the user choose a card XML file, and loads it.
    void loadXMLFile();
    /// Shows the card of a file as if it had been read; the failure is presented. Refused while a card is read, a
    /// print asks, or a file is written.
    void loadXMLFile(const QString& path);
    /// A file was dropped on the main window while another window blocks it.
    void refuseDrop();

    void showStatusItem() override { m_statusItem.show(); }
    void hideStatusItem() override;

private:
    // The steps of the start-up.
    void setObservers();
    void initPrefs();

    // The main window.
    void disableUI();
    void enableUI();
    void setEnabled(bool enabled);
    void showCard(PanelLine::CardOrigin origin);

    /// Refuses the user's request while the current card is occupied so; says whether it did.
    bool refuseWhile(CardOccupation::Any kinds);
    bool permitPrint();

    // The files.
    void updateRecentsMenu() { m_recentsMenu.update(); }
    void whenCardIsThere(void (AppDelegate::*action)(const CardRecord&));
    void view(const CardRecord& record) { m_attestationViewer->show(record); }
    void print(const CardRecord& record);
    void save(const CardRecord& record) { m_saving.save(record); }

    // What the reading of a card needs.
    void beginSheet(const QString& message) override;
    void endSheed() override { m_window.endSheed(); }
    void showBinding(bool isBinding) override { m_window.setConnecting(isBinding); }
    void refuse(const QString& reason) override { m_front.refuse(reason); }
    void presentError(const Error& error) override { m_front.presentError(error); }
    [[nodiscard]] const std::optional<CardRecord>& currentVitale() const override { return m_currentVitale; }
    void cardWasRead(const CardRecord& record) override;
    void readFailed() override { m_window.setReadFailed(QDateTime::currentDateTime()); }
    void readCancelled() override { m_window.setReadCancelled(QDateTime::currentDateTime()); }
    void saveXMLIfNeeded() override { m_saving.saveXMLIfNeeded(m_currentVitale); }

    const Bundle& m_bundle;
    UserDefaults& m_settings;
    SchemeLogos& m_logos;
    const PageFonts& m_fonts;
    MainWindow& m_window;
    std::shared_ptr<LVitAccess> m_lvit;
    ReadWorkflow m_reading;
    PrintDesk m_printDesk;
    CardOccupation m_occupation;
    FrontWindow m_front;
    WritingDesk m_writing;
    DesktopRequests m_desktop;
    AttestationSaving m_saving;
    std::optional<CardRecord> m_currentVitale;
    std::unique_ptr<BindObserver> m_bindObserver;
    std::unique_ptr<FollowingViewer> m_attestationViewer;
    StatusItemKeeper m_statusItem;
    RecentAttestations m_recents;
    RecentsMenu m_recentsMenu;
    std::unique_ptr<SUUpdater> m_updater;
    CardFileChoice m_fileChoice;
    bool m_enabled = false;
};
