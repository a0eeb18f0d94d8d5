#pragma once

#include <QMainWindow>
#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class MVPreference;
class PaneContentView;
class PaneToolbar;
class QAction;

/// The controller of the preferences window: a toolbar with one button per registered pane, and the view of the current
/// pane below it. The window is loaded when it is first shown and kept from then on. Main thread only.
class MVPreferencesController final : public QObject
{
    Q_OBJECT

public:
    using Panes = std::vector<std::shared_ptr<MVPreference>>;

    MVPreferencesController();
    MVPreferencesController(const MVPreferencesController&) = delete;
    MVPreferencesController& operator=(const MVPreferencesController&) = delete;
    ~MVPreferencesController() override;

    /// The pane whose view is in the window; null until the window first shows one.
    [[nodiscard]] MVPreference* currentPane() const { return m_currentPane; }
    /// The registered panes, in the order of their registration.
    [[nodiscard]] const Panes& panes() const { return m_panes; }
    /// The panes' identifiers as they were when they were first asked for: a pane that comes later gets no button.
    [[nodiscard]] const QStringList& identifiers();
    [[nodiscard]] PaneToolbar& toolbar() const { return *m_toolbar; }

    /// Registers a pane, once: it is appended, prepared, and shown when no other is. Null is no pane.
    void resigterPreferencesPane(std::shared_ptr<MVPreference> pane);
    void unregisterPreferencesPane(const MVPreference* pane);
    void addPane(std::shared_ptr<MVPreference> pane);
    /// Leaves the pane where it is: panes live as long as the window.
    void removePane(const MVPreference* pane);

    /// Makes a registered pane the current one, with a cross-fade from the one before; null empties the window. Does
    /// nothing before the window is loaded.
    void showPane(MVPreference* pane);
    /// A button of the toolbar was chosen.
    void selectPane(const QAction* sender);

    void show();
    void hide();
    void showPaneWithIdentifier(QStringView identifier);

    /// Null when there is none.
    [[nodiscard]] MVPreference* paneForView(const QWidget* view) const;
    [[nodiscard]] MVPreference* paneForIdentifier(QStringView identifier) const;

    void setupToolbar();
    /// Lets the toolbar ask for its buttons anew, when the window is loaded.
    void resetToolbar();
    void initWindow();
    /// Loads the window if it is not loaded yet.
    void checkWindowLoaded();

    /// The window, and where it shows the panes' views; null before it is loaded.
    [[nodiscard]] QMainWindow* window() const { return m_window.get(); }
    [[nodiscard]] PaneContentView* contentView() const { return m_contentView; }

    // Send the message to the pane, if there is one.
    static void paneWillAppear(MVPreference* pane);
    static void paneDidAppear(MVPreference* pane);
    static void paneWillDisappear(MVPreference* pane);
    static void paneDidDisappear(MVPreference* pane);

private:
    void windowDidLoad();
    void attachToolbar();
    void fadeTo(MVPreference& pane);
    [[nodiscard]] bool isRegistered(const MVPreference* pane) const;

    Panes m_panes;
    std::optional<QStringList> m_identifiers;
    MVPreference* m_currentPane = nullptr; // one of m_panes
    std::unique_ptr<QMainWindow> m_window;
    PaneContentView* m_contentView = nullptr; // the window's
    // Goes before the window, whose child it is while it is attached.
    std::unique_ptr<PaneToolbar> m_toolbar;
};
