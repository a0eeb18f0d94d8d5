#pragma once

#include "app/models/ReaderObserver.h"

#include <QMainWindow>

#include <functional>
#include <memory>

class ArrowKeys;
class Bundle;
class CardPanel;
class MVSimpleOpaqueView;
class MXButton;
class ProgressSheet;
class QAction;
class QLabel;
class QRubberBand;

namespace Ui {
class MainWindow;
}

/// The main window: seven tiles, the panel, the menu bar and the progress sheet. It emits requests and does not handle
/// them. Tiles and menu entries for the same purpose emit the same signal. Main thread only.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    /// What closing the window does. It never ends the application.
    enum class ClosePolicy
    {
        Hide,    ///< the status item can show it again
        Iconify, ///< without a status item, the desktop's task list can show it again
    };

    /// When the window comes to the screen.
    enum class Appearance
    {
        AtShow,
        AtOnce, ///< while its content is made, so that the window manager works at the same time; at show for large
                ///< text
    };

    /// Icons come from the bundle; a missing one is not shown.
    explicit MainWindow(const Bundle& bundle, Appearance appearance = Appearance::AtShow, QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Sets the tiles' colours and the first summary. Called by the constructor; may be called again.
    void initUI();

    // Outlets.
    [[nodiscard]] MXButton* readButton() const;
    [[nodiscard]] MXButton* viewButton() const;
    [[nodiscard]] MXButton* printButton() const;
    [[nodiscard]] MXButton* saveButton() const;
    [[nodiscard]] MXButton* quitButton() const;
    [[nodiscard]] MXButton* mailButton() const;
    [[nodiscard]] MXButton* settingsButton() const;
    [[nodiscard]] MVSimpleOpaqueView* vitaleInfoView() const;
    /// Shown as it is, at most three lines, elided if too long.
    [[nodiscard]] QLabel* vitaleInfoTextField() const;
    /// Has no submenu until setMenu() is called.
    [[nodiscard]] QAction* recentsMenuItem() const;
    [[nodiscard]] QAction* updateMenuItem() const;
    /// Also added to the sheets, for its shortcut.
    [[nodiscard]] QAction* quitAction() const;
    /// The card's summary and the texts below it.
    [[nodiscard]] CardPanel& panel() const { return *m_panel; }
    [[nodiscard]] ProgressSheet* sheet() const { return m_sheet.get(); }

    /// For a bound card service.
    void enableTiles();
    /// For a card service that is not bound: reading binds again and stays enabled, the quit tile does not.
    void disableCardTiles();
    /// Shows the reader's state in the panel, and in the tool tips of disabled tiles.
    void setReader(const ReaderChange& change);
    /// Enables menu entries by the function's result.
    void validateMenuItems(const std::function<bool(const QAction&)>& validateMenuItem);
    /// Whether the entry is a card action: read, view, print, save.
    [[nodiscard]] bool isCardAction(const QAction& menuItem) const;

    /// Makes the menu bar's shortcuts work in that window too, except for those that it has itself.
    void addShortcutsTo(QWidget& window) const;
    /// Gives the widget a context menu that copies the number or the name.
    void addCopyMenuTo(QWidget& widget);

    void beginSheet(const QString& message);
    void endSheed();

    /// Called at each closing; without a policy the window is iconified. It then refuses to close, so the application
    /// is ended with QCoreApplication::exit(), which does not ask windows.
    void setClosePolicy(std::function<ClosePolicy()> policy);

Q_SIGNALS:
    void readRequested();
    /// The read is to be cancelled.
    void readCancelRequested();
    void viewRequested();
    void printRequested();
    void saveRequested();
    void quitRequested();
    void mailRequested();
    void settingsRequested();
    void folderRequested();
    void copyNumberRequested();
    void copyNameRequested();
    void cardFileRequested();
    void helpRequested();
    void diagnosisRequested();
    void updateRequested();
    /// A local file that looks like XML was dropped.
    void cardFileDropped(const QString& path);
    /// The same while another window blocks this one: the file is not loaded.
    void cardFileDroppedInVain();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void connectRequests();
    void setUpTexts();
    void showToolTips();
    void setUpIcons(const Bundle& bundle);
    void showWindowIcon();
    [[nodiscard]] bool isBlocked() const;

    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<CardPanel> m_panel;
    std::unique_ptr<ArrowKeys> m_arrowKeys; // of the tiles
    QStringList m_toolTips;                 // of the enabled tiles, in their order
    std::optional<CardReaderState> m_reader;
    std::unique_ptr<ProgressSheet> m_sheet;
    std::function<ClosePolicy()> m_closePolicy;
    QRubberBand* m_dropOutline = nullptr; // shown while a card file is dragged over the window, which owns it
    QString m_windowIconPath;             // empty once the icon is set
};
