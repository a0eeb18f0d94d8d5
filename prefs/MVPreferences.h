#pragma once

#include <QStringView>

#include <memory>

class MVPreference;
class MVPreferencesController;

/// Access to the preferences window without a reference to it: each operation calls the single controller, which is
/// made at first use and never destroyed. Needs a QApplication. Main thread only.
class MVPreferences final
{
public:
    MVPreferences() = delete;

    [[nodiscard]] static MVPreferencesController& preferences();

    /// Adds a pane and its button. The window opens on the first one.
    static void resigterPreferencesPane(std::shared_ptr<MVPreference> pane);
    /// Does nothing: panes stay registered.
    static void unregisterPreferencesPane(const MVPreference* pane);

    /// Shows the window with its last pane.
    static void show();
    static void hide();
    /// Shows the window, then that pane if it exists.
    static void showPaneWithIdentifier(QStringView identifier);
};
