#pragma once

#include "platform/Error.h"
#include "update/client/UpdateConfiguration.h"
#include "update/client/UpdateProgram.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

class UserDefaults;

/// The application's software updates: runs the program that looks for updates, one at a time, and ends it in the
/// destructor. This process does not use the network. Main thread only.
class SUUpdater final : public QObject
{
    Q_OBJECT

public:
    /// The store has "SULastCheckTime". Automatic checks, at most daily, depend on the configuration.
    SUUpdater(UpdateConfiguration configuration, QString program, std::unique_ptr<UserDefaults> defaults,
              QObject* parent = nullptr);
    ~SUUpdater() override;

    /// A check for the user, with a window for progress and result, which comes to the front if it is open.
    void checkForUpdates(const QObject* sender);

    /// Whether there is a feed to look at, or a package manager to refer to.
    [[nodiscard]] bool canCheckForUpdates() const
    {
        return m_configuration.feed.has_value() || m_configuration.isPackaged;
    }

    /// When the feed was last fetched; absent if never.
    [[nodiscard]] std::optional<QDateTime> lastUpdateCheckDate() const;

Q_SIGNALS:
    /// The user's check could not be started.
    void failed(const Error& error);

private:
    void planNextCheck();
    void checkByItself();
    [[nodiscard]] std::chrono::milliseconds untilNextIsDue() const;
    [[nodiscard]] std::error_code start(const QStringList& arguments);

    UpdateConfiguration m_configuration;
    QString m_program;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<UpdateProgram> m_running;
    QTimer m_timer;
};
