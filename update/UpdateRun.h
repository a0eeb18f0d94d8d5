#pragma once

#include "update/client/UpdateConfiguration.h"

#include <QObject>

#include <memory>

class UpdateSession;
class UpdateWindow;
class UserDefaults;

/// A check for updates, from its begin to the end of its window: looks where the information dictionary says for a
/// newer version, shows what it found, downloads the package, checks the maker's signature and hands the package to the
/// desktop. Nothing reaches the network before a check, and every installation sends the same. Main thread only.
class UpdateRun final : public QObject
{
    Q_OBJECT

public:
    /// A run over the given store, where "SULastCheckTime" and "SUSkippedVersion" are kept.
    UpdateRun(UpdateConfiguration configuration, std::unique_ptr<UserDefaults> defaults);
    ~UpdateRun() override;

    /// A check that the user asks for: a window shows its progress and its outcome, whatever that is. While it is open
    /// it only comes to the front.
    void checkForUpdates();
    /// A check that the program makes by itself: a window opens only for a new version that the user has not refused.
    void checkByItself();

Q_SIGNALS:
    /// There is no check any more, and no window.
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
