#pragma once

#include "app/models/PanelLine.h"

#include <QMainWindow>
#include <QTimer>

#include <functional>
#include <memory>

class Bundle;
class MVSimpleOpaqueView;
class MXButton;
class ProgressSheet;
class QAction;
class QLabel;
class SpokenNotice;

namespace Ui {
class MainWindow;
}

/// The main window: seven tiles, the summary of the card, the menu bar and the progress sheet. It shows and asks; what
/// is done about it is its owner's business. Tiles and menu entries of one purpose emit the same signal. Main thread
/// only.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    /// What closing the window does. It never ends the application.
    enum class ClosePolicy
    {
        Hide,    ///< a status item brings it back
        Iconify, ///< nothing else would: the desktop's list of windows keeps it
    };

    /// Icons come from the bundle; one that is missing is not shown.
    explicit MainWindow(const Bundle& bundle, QWidget* parent = nullptr);
    ~MainWindow() override;

    /// The tiles' colours and the summary before any card; done once by the constructor, harmless when done again.
    void initUI();

    // The outlets.
    [[nodiscard]] MXButton* readButton() const;
    [[nodiscard]] MXButton* viewButton() const;
    [[nodiscard]] MXButton* printButton() const;
    [[nodiscard]] MXButton* saveButton() const;
    [[nodiscard]] MXButton* quitButton() const;
    [[nodiscard]] MXButton* mailButton() const;
    [[nodiscard]] MXButton* settingsButton() const;
    [[nodiscard]] MVSimpleOpaqueView* vitaleInfoView() const;
    /// Its text is shown as it stands, three lines at most, elided where they are too long.
    [[nodiscard]] QLabel* vitaleInfoTextField() const;
    /// Has no submenu until one is attached with setMenu().
    [[nodiscard]] QAction* recentsMenuItem() const;
    [[nodiscard]] QAction* updateMenuItem() const;
    /// Its shortcut is to work in the sheets, too.
    [[nodiscard]] QAction* quitAction() const;
    [[nodiscard]] ProgressSheet* sheet() const { return m_sheet.get(); }

    /// The tiles of a bound card service.
    void enableTiles();
    /// Those of one that is not: reading stays possible, as it binds again; leaving by the tile does not.
    void disableCardTiles();
    /// Asks for each entry of the menu bar whether it can be chosen from now on.
    void validateMenuItems(const std::function<bool(const QAction&)>& validateMenuItem);
    /// Whether the entry is one of the card actions: read, view, print, save.
    [[nodiscard]] bool isCardAction(const QAction& menuItem) const;
    /// Says beside the summary when the card was read, or its file opened: rights are those of that time.
    void setCardTime(PanelLine::CardOrigin origin, const QDateTime& time);
    /// Says that a read failed then, so that the card that is shown, if any, is an earlier one; until the next card.
    void setReadFailed(const QDateTime& time);
    /// The same of a read that was cancelled.
    void setReadCancelled(const QDateTime& time);
    /// Says why the last save wrote nothing; an empty text once one has succeeded.
    void setSaveFailure(const QString& text);
    /// Says why a request was refused, to the eye and to screen readers; an empty text takes it away, and so does each
    /// read.
    void setNotice(const QString& text);
    /// Says, in the place of that time, that the card service is being connected to, once this takes longer than usual.
    void setConnecting(bool isConnecting);

    /// Shows the progress sheet with that message.
    void beginSheet(const QString& message);
    /// Takes the progress sheet down.
    void endSheed();

    /// Asked at each closing. Without a policy the window is iconified. An iconified window refuses to close, so the
    /// application is left by QCoreApplication::exit(), which asks no window.
    void setClosePolicy(std::function<ClosePolicy()> policy);

Q_SIGNALS:
    void readRequested();
    /// The read that the progress sheet is shown for is to end.
    void readCancelRequested();
    void viewRequested();
    void printRequested();
    void saveRequested();
    void quitRequested();
    void mailRequested();
    void settingsRequested();
    void folderRequested();
    /// A card XML file is to be chosen.
    void cardFileRequested();
    void helpRequested();
    void updateRequested();
    /// One local file that looks like XML was dropped on the window.
    void cardFileDropped(const QString& path);
    /// The same, but another window has come to block this one meanwhile: the file is not to be loaded.
    void cardFileDroppedInVain();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void connectRequests();
    void setUpTexts();
    void setUpIcons(const Bundle& bundle);
    void showWindowIcon();
    void showPanelLine();
    void announce(const QString& text);
    [[nodiscard]] bool isBlocked() const;

    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<ProgressSheet> m_sheet;
    std::function<ClosePolicy()> m_closePolicy;
    PanelLine m_panelLine;
    SpokenNotice* m_spokenNotice = nullptr; // belongs to the panel
    QTimer m_connectingTimer;               // single shot: runs while the connecting takes no longer than usual
    QString m_windowIconPath;               // emptied once the icon is shown
};
