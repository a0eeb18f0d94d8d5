#pragma once

#include <QMainWindow>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class MVPreference;
class PaneContentView;
class PaneToolbar;
class QAction;

/// The controller of the preferences window: a toolbar with a button per pane, and the current pane's view below it.
/// The window is loaded when it is first shown. Main thread only.
class MVPreferencesController final : public QObject
{
    Q_OBJECT

public:
    using Panes = std::vector<std::shared_ptr<MVPreference>>;

    MVPreferencesController();
    Q_DISABLE_COPY(MVPreferencesController)
    ~MVPreferencesController() override;

    /// The pane in the window; null until the window is first shown.
    [[nodiscard]] MVPreference* currentPane() const { return m_currentPane; }
    /// In the order of their registration.
    [[nodiscard]] const Panes& panes() const { return m_panes; }
    /// The panes' identifiers at the first call: panes that are added later get no button.
    [[nodiscard]] const QStringList& identifiers();
    [[nodiscard]] PaneToolbar& toolbar() const { return *m_toolbar; }

    /// Adds a pane unless it is registered: initialises it, and shows it when there is no other. Null is ignored.
    void resigterPreferencesPane(std::shared_ptr<MVPreference> pane);
    void unregisterPreferencesPane(const MVPreference* pane);
    void addPane(std::shared_ptr<MVPreference> pane);
    /// Does nothing: panes stay as long as the window.
    void removePane(const MVPreference* pane);

    /// Shows a registered pane with a cross-fade; null empties the window. Does nothing before the window is loaded.
    void showPane(MVPreference* pane);
    /// A toolbar button was chosen.
    void selectPane(const QAction* sender);

    void show();
    void hide();
    void showPaneWithIdentifier(QStringView identifier);

    /// Null when there is none.
    [[nodiscard]] MVPreference* paneForView(const QWidget* view) const;
    [[nodiscard]] MVPreference* paneForIdentifier(QStringView identifier) const;

    void setupToolbar();
    /// Makes the toolbar's buttons again, if the window is loaded.
    void resetToolbar();
    void initWindow();
    void checkWindowLoaded();

    /// The window, and the view for its panes; null before it is loaded.
    [[nodiscard]] QMainWindow* window() const { return m_window.get(); }
    [[nodiscard]] PaneContentView* contentView() const { return m_contentView; }

    // These call the pane, if it is not null.
    static void paneWillAppear(MVPreference* pane);
    static void paneDidAppear(MVPreference* pane);
    static void paneWillDisappear(MVPreference* pane);
    static void paneDidDisappear(MVPreference* pane);

private:
    void windowDidLoad();
    void attachToolbar();
    void giveRoom();
    /// Shows the pane that many buttons further; after the last comes the first.
    void showNeighbour(qsizetype step);
    void fadeTo(MVPreference& pane);
    [[nodiscard]] bool isRegistered(const MVPreference* pane) const;

    Panes m_panes;
    std::optional<QStringList> m_identifiers;
    MVPreference* m_currentPane = nullptr; // one of m_panes
    std::unique_ptr<QMainWindow> m_window;
    PaneContentView* m_contentView = nullptr; // belongs to the window
    // Last member: the toolbar must be destroyed before the window, whose child it is.
    std::unique_ptr<PaneToolbar> m_toolbar;
};
