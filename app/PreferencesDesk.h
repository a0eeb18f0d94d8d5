#pragma once

#include "platform/Error.h"

#include <QObject>

#include <memory>

class Bundle;
class LVitAccess;
class MainWindow;
class StatusItemControl;
class SUUpdater;
class UserDefaults;

/// The preferences window with its panes, and the updates, which one of the panes is for. Main thread only.
class PreferencesDesk final : public QObject
{
    Q_OBJECT

public:
    /// All of them must outlive it.
    struct Surroundings
    {
        const Bundle& bundle;
        UserDefaults& settings;
        MainWindow& window;
        StatusItemControl& statusItem;
    };

    explicit PreferencesDesk(const Surroundings& with);
    Q_DISABLE_COPY(PreferencesDesk)
    ~PreferencesDesk() override;

    /// Step of the start: makes the updater and registers the panes.
    void initPrefs(const std::shared_ptr<LVitAccess>& client);

    void show() const;
    void checkForUpdates();
    /// Whether there is an address to look at.
    [[nodiscard]] bool canCheckForUpdates() const;

Q_SIGNALS:
    void failed(const Error& error);
    /// When the card or the recent files are to be forgotten was changed.
    void forgettingChanged();
    /// In front of that window.
    void diagnosisRequested(QWidget* window);

private:
    Surroundings m_with;
    std::unique_ptr<SUUpdater> m_updater; // null before the panes are registered
};
