#pragma once

#include "app/cards/SaveFailure.h"
#include "app/models/PanelLine.h"
#include "app/models/ReadWorkflow.h"
#include "app/models/RecentAttestations.h"
#include "attestation/print/PrintDesk.h"
#include "card/CardRecord.h"
#include "platform/Bundle.h"
#include "platform/gui/AlertQueue.h"
#include "prefs/StatusItemControl.h"
#include "support/move/MoveToApplications.h"

#include <QObject>
#include <QPointer>

#include <chrono>
#include <expected>
#include <functional>
#include <memory>
#include <optional>

class LVitAccess;
class MVAttestationWindowController;
class MainWindow;
class PageFonts;
class QAction;
class QFileDialog;
class QMenu;
class SavingSheet;
class SchemeLogos;
class StatusItem;
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
    void applicationWillTerminate();
    /// The program was started again, or asked for: a window that is not visible comes back. Whether the caller is to
    /// do anything else about it: never.
    bool applicationShouldHandleReopen(const QObject* sender, bool hasVisibleWindows);

    /// Makes the main window the active one, in front of the others, but for a print that asks.
    void showMainWindow(const QObject* sender);
    /// The user leaves: ends the application once the files that are being written are whole. A save that fails
    /// meanwhile keeps it, to tell so.
    void quit();
    /// Ends the application, whatever is on the screen, once the files that are being written are whole.
    void terminate();
    /// How long quit() and terminate() wait, with the windows, for a disk that does not answer. After that FileWorker
    /// waits for its own time without them.
    static constexpr std::chrono::seconds patienceAtTheEnd{8};

    [[nodiscard]] bool isEnabled() const { return m_enabled; }
    [[nodiscard]] bool isReading() const { return m_reading.isReading(); }

    // What the user can ask for. The sender is the button or the menu's entry; none when another operation asks.
    void readVitale(const QObject* sender);
    void viewAttestation(const QObject* sender);
    void printAttestation(const QObject* sender);
    void saveAttestation(const QObject* sender);
    void openAttestationsFolder(const QObject* sender);
    void openRecentAttestation(const QObject* sender);
    void clearRecentsMenu(const QObject* sender);
    void sendComment(const QObject* sender);
    void showHelp(const QObject* sender);
    void preferences(const QObject* sender);
    /// What an entry of the status item's menu stands for, by its tag. Any other sender is ignored.
    void executeAction(const QObject* sender);
    /// Whether an entry of the menu bar can be chosen: those of the card actions once the card service is bound.
    [[nodiscard]] bool validateMenuItem(const QAction& menuItem) const;

    /// Lets the user choose a card XML file, and loads it.
    void loadXMLFile();
    /// Shows the card of a file as if it had been read; the failure is presented. Refused while a card is read, a
    /// print asks, or a file is written.
    void loadXMLFile(const QString& path);

    void showStatusItem() override;
    void hideStatusItem() override;

private:
    /// Whether the application ends once nothing is being written any more.
    enum class Leaving
    {
        No,
        UnlessSaveFails,
        InAnyCase
    };

    // The steps of the start-up.
    void setObservers();
    void initPrefs();

    // The main window.
    void initUI();
    void disableUI();
    void enableUI();
    void updateUI();
    void connectWindow();
    void setEnabled(bool enabled);
    void showCard(PanelLine::CardOrigin origin);
    void updateViewer();

    // One card at a time: these refuse the user's request, and say whether they did.
    bool refuseWhileReading();
    bool refuseWhilePrintAsks();
    bool refuseWhileWriting();
    void refuseDrop();
    bool permitPrint();

    /// The main window, seen: what belongs to it would be lost on a hidden one.
    [[nodiscard]] MainWindow& visibleWindow();
    /// Beeps, and sees to it that the main window is seen, which says why.
    void alertUser();

    // The files.
    void addToRecents(const QString& path);
    void updateRecentsMenu();
    void whenCardIsThere(void (AppDelegate::*action)(const CardRecord&));
    void view(const CardRecord& record);
    void print(const CardRecord& record);
    void save(const CardRecord& record);
    void finishSave(const std::expected<QString, SaveFailure>& saved);

    // What is written meanwhile.
    void writeAside(const std::function<std::function<void()>()>& work);
    void writingHasEnded();
    void endOnceWritten();
    [[nodiscard]] QString attestationsFolder() const;

    // What the reading of a card needs.
    void beginSheet(const QString& message) override;
    void endSheed() override;
    void showBinding(bool isBinding) override;
    void refuse(const QString& reason) override;
    void presentError(const Error& error) override;
    [[nodiscard]] const std::optional<CardRecord>& currentVitale() const override { return m_currentVitale; }
    void cardWasRead(const CardRecord& record) override;
    void readFailed() override;
    void readCancelled() override;
    void saveXMLIfNeeded() override;

    const Bundle& m_bundle;
    UserDefaults& m_settings;
    SchemeLogos& m_logos;
    const PageFonts& m_fonts;
    MainWindow& m_window;
    AlertQueue m_alerts;
    std::shared_ptr<LVitAccess> m_lvit;
    ReadWorkflow m_reading;
    PrintDesk m_printDesk;
    std::optional<CardRecord> m_currentVitale;
    std::unique_ptr<MVAttestationWindowController> m_attestationViewer;
    std::unique_ptr<StatusItem> m_statusItem;
    RecentAttestations m_recents;
    QPointer<QMenu> m_recentsMenu; // the window's own
    std::unique_ptr<SUUpdater> m_updater;
    QPointer<QFileDialog> m_filePanel;
    QPointer<SavingSheet> m_savingSheet; // belongs to the window
    Leaving m_leaving = Leaving::No;
    bool m_enabled = false;
    bool m_isViewerDue = false; // it does not show the current card yet
};
