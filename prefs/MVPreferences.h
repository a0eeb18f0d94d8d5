#pragma once

#include <QStringView>

#include <memory>

class MVPreference;
class MVPreferencesController;

/// The door to the preferences window, for those who hold no reference to it: each operation goes to the single
/// controller, which is made at first use and never released. Needs a QApplication; main thread only.
class MVPreferences final
{
public:
    MVPreferences() = delete;

    /// The single controller.
    [[nodiscard]] static MVPreferencesController& preferences();

    /// Adds a pane: its button takes the next place, and the first one is what the window opens on.
    static void resigterPreferencesPane(std::shared_ptr<MVPreference> pane);
    /// Changes nothing: a registered pane stays.
    static void unregisterPreferencesPane(const MVPreference* pane);

    /// Brings the window to the front, on the pane that it showed last.
    static void show();
    /// Takes the window off the screen.
    static void hide();
    /// Shows the window, then that pane, if there is one with that identifier.
    static void showPaneWithIdentifier(QStringView identifier);
};
