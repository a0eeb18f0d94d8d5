#pragma once

#include "update/client/UpdateConfiguration.h"

#include <QObject>

#include <memory>

class UpdateSession;
class UpdateWindow;
class UserDefaults;

/// A check for updates: searches for a newer version at the address in the information dictionary, shows the result,
/// downloads the package, verifies the signature and opens the package with the desktop. There is no network access
/// before a check, and all installations send the same request. Main thread only.
class UpdateRun final : public QObject
{
    Q_OBJECT

public:
    /// The store has "SULastCheckTime" and "SUSkippedVersion".
    UpdateRun(UpdateConfiguration configuration, std::unique_ptr<UserDefaults> defaults);
    ~UpdateRun() override;

    /// A check for the user, with a window for progress and result. If the window is open, it only comes to the front.
    void checkForUpdates();
    /// An automatic check: a window opens only for a new version that the user has not skipped.
    void checkByItself();

Q_SIGNALS:
    /// The check and its window have ended.
    void finished();

private:
    void makeSession();
    void startSession();
    void makeWindow();
    void follow();
    void close();

    UpdateConfiguration m_configuration;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<UpdateSession> m_session;
    std::unique_ptr<UpdateWindow> m_window;
};
