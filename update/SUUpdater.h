#pragma once

#include "update/UpdateConfiguration.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

class UpdateSession;
class UpdateWindow;
class UserDefaults;

/// The program's software updates: looks where the information dictionary says for a newer version, shows what it
/// found, downloads the package, checks the maker's signature and hands the package to the desktop. Nothing reaches the
/// network before a check, and every installation sends the same. Main thread only.
class SUUpdater final : public QObject
{
    Q_OBJECT

public:
    /// An updater over the given store, where "SULastCheckTime" and "SUSkippedVersion" are kept. It looks by itself,
    /// daily at most, only when the configuration says so.
    SUUpdater(UpdateConfiguration configuration, std::unique_ptr<UserDefaults> defaults, QObject* parent = nullptr);
    ~SUUpdater() override;

    /// A check that the user asks for: a window shows its progress and its outcome, whatever that is. While it is open
    /// it only comes to the front. The sender is not looked at, and may be null.
    void checkForUpdates(const QObject* sender);

    /// When the feed was last asked for; absent when it never was.
    [[nodiscard]] std::optional<QDateTime> lastUpdateCheckDate() const;

private:
    void planNextCheck();
    void checkByItself();
    void makeSession();
    void startSession();
    void makeWindow();
    void follow();
    void close();

    UpdateConfiguration m_configuration;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<UpdateSession> m_session;
    std::unique_ptr<UpdateWindow> m_window;
    QTimer m_timer;
};
