#pragma once

#include "app/AttestationSaving.h"
#include "app/CardOccupation.h"
#include "app/DesktopRequests.h"
#include "app/FollowingViewer.h"
#include "app/FrontWindow.h"
#include "app/PreferencesDesk.h"
#include "app/ReaderDesk.h"
#include "app/RequestRefusal.h"
#include "app/ShownCard.h"
#include "app/StatusItemKeeper.h"
#include "app/WritingDesk.h"
#include "app/models/BindObserver.h"
#include "app/models/PanelLine.h"
#include "app/models/ReadWorkflow.h"
#include "app/models/RecentAttestations.h"
#include "app/windows/CardFileChoice.h"
#include "app/windows/CardPanel.h"
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
class UserDefaults;

/// The application's controller: owns the objects of the whole run and connects them with the user's requests. Each
/// operation is a few lines that use another class. Main thread only.
class AppDelegate final : public QObject, public StatusItemControl, private ReadWorkflowDelegate
{
    Q_OBJECT

public:
    /// All of them outlive the controller.
    struct Surroundings
    {
        const Bundle& bundle;
        UserDefaults& settings;
        SchemeLogos& logos;
        const PageFonts& fonts;
        MainWindow& window;
    };

    AppDelegate(const Surroundings& surroundings, std::shared_ptr<LVitAccess> client);
    Q_DISABLE_COPY(AppDelegate)
    ~AppDelegate() override;

    /// The window was loaded: connects it and sets its first state.
    void awakeFromNib();
    /// First step of the start: sets the log's level and asks whether to move to the Applications folder. Waits for the
    /// answer, after which the program may have to end.
    [[nodiscard]] static MoveOutcome applicationWillFinishLaunching(const Bundle& bundle);
    /// The rest of the start, once.
    void applicationDidFinishLaunching();
    void applicationWillTerminate()
    {
        m_bindObserver.reset();
        m_readerDesk.stop();
    }
    /// The program was started or requested again: shows the window if none is visible. Always false.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);

    /// Brings the main window to the front, behind a print dialog.
    void showMainWindow() { m_front.show(); }
    /// Ends the application, at the user's request or for another reason, after files have been written (WritingDesk).
    void quit() { m_writing.quit(); }
    void terminate() { m_writing.terminate(); }

    [[nodiscard]] bool isEnabled() const { return m_enabled; }
    [[nodiscard]] bool isReading() const { return m_reading.isReading(); }

    // Operations of the user.
    /// The sender is a button or a menu entry, or null for the status item.
    void readVitale(const QObject* sender);
    void cancelRead() { m_reading.cancelRead(); }
    void viewAttestation() { whenCardIsThere(&AppDelegate::view); }
    void printAttestation() { whenNothingIsWritten(&AppDelegate::print); }
    void saveAttestation() { whenNothingIsWritten(&AppDelegate::save); }
    /// Copies the insured person's number or name for a while.
    void copyNumber() { m_currentVitale.copyNumber(); }
    void copyName() { m_currentVitale.copyName(); }
    void openSavedFile(const QString& path) { m_desktop.openFile(path); }
    void openFolder(const QString& path) { m_desktop.openFolder(path); }
    void openAttestationsFolder() { m_desktop.openFolder(m_saving.folder()); }
    /// Opens the file of an entry of the recents menu.
    void openRecentAttestation(const QObject* sender);
    void clearRecentsMenu() { m_recentsMenu.clear(); }
    void sendComment() { m_desktop.sendComment(); }
    void showHelp() { m_desktop.showHelp(); }
    void showDiagnosis(QWidget& window) { m_desktop.showDiagnosis(window); }
    void preferences();
    void checkForUpdates() { m_preferences.checkForUpdates(); }
    /// Runs an entry of the status item's menu by its tag. Other senders are ignored.
    void executeAction(const QObject* sender);
    /// Whether a menu entry is enabled: card actions need a bound card service, updates an address to look at.
    [[nodiscard]] bool validateMenuItem(const QAction& menuItem) const;

    /// Asks for a card XML file and loads it.
    void loadXMLFile();
    /// Shows the card of a file, or presents the error. Refused during a read, a print dialog or a write.
    void loadXMLFile(const QString& path);
    /// A file was dropped while another window blocks the main window.
    void refuseDrop() { m_refusal.refuseDrop(); }

    void showStatusItem() override { m_statusItem.show(); }
    void hideStatusItem() override;

private:
    // Steps of the start.
    void setObservers();

    void disableUI();
    void enableUI();
    void setEnabled(bool enabled);
    void showCard(const CardRecord& record, PanelLine::CardOrigin origin);
    void forgetCard();
    void followSettings();

    [[nodiscard]] bool refuseWhile(CardOccupation::Any kinds) { return m_refusal.refuseWhile(kinds); }
    bool permitPrint();

    void updateRecentsMenu() { m_recentsMenu.update(); }
    void whenNothingIsWritten(void (AppDelegate::*action)(const CardRecord&));
    void whenCardIsThere(void (AppDelegate::*action)(const CardRecord&));
    void view(const CardRecord& record) { m_attestationViewer->show(record); }
    void print(const CardRecord& record);
    void save(const CardRecord& record) { m_saving.save(record); }

    // ReadWorkflowDelegate.
    void beginSheet(const QString& message) override;
    void endSheed() override { m_window.endSheed(); }
    void showBinding(bool isBinding) override { m_window.panel().setConnecting(isBinding); }
    void refuse(const QString& reason) override { m_front.refuse(reason); }
    void presentError(const Error& error) override;
    [[nodiscard]] const std::optional<CardRecord>& currentVitale() const override { return m_currentVitale.record(); }
    void cardWasRead(const CardRecord& record) override;
    void readFailed() override { m_window.panel().setReadFailed(QDateTime::currentDateTime()); }
    void readCancelled() override { m_window.panel().setReadCancelled(QDateTime::currentDateTime()); }
    void saveXMLIfNeeded() override { m_saving.saveXMLIfNeeded(currentVitale()); }

    const Bundle& m_bundle;
    UserDefaults& m_settings;
    SchemeLogos& m_logos;
    const PageFonts& m_fonts;
    MainWindow& m_window;
    std::shared_ptr<LVitAccess> m_lvit;
    ReadWorkflow m_reading;
    PrintDesk m_printDesk;
    CardOccupation m_occupation;
    ReaderDesk m_readerDesk;
    FrontWindow m_front;
    RequestRefusal m_refusal;
    WritingDesk m_writing;
    DesktopRequests m_desktop;
    AttestationSaving m_saving;
    ShownCard m_currentVitale;
    std::unique_ptr<BindObserver> m_bindObserver;
    std::unique_ptr<FollowingViewer> m_attestationViewer;
    StatusItemKeeper m_statusItem;
    PreferencesDesk m_preferences;
    RecentAttestations m_recents;
    RecentsMenu m_recentsMenu;
    CardFileChoice m_fileChoice;
    bool m_enabled = false;
};
