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

/// The application's software updates: starts the program that looks for them, one at a time, which ends with this
/// object at the latest. Nothing reaches the network from this process. Main thread only.
class SUUpdater final : public QObject
{
    Q_OBJECT

public:
    /// An updater that starts the program, over the given store, where the program keeps "SULastCheckTime". It looks by
    /// itself, daily at most, only when the configuration says so.
    SUUpdater(UpdateConfiguration configuration, QString program, std::unique_ptr<UserDefaults> defaults,
              QObject* parent = nullptr);
    ~SUUpdater() override;

    /// A check that the user asks for: a window shows its progress and its outcome, whatever that is. While it is open
    /// it only comes to the front. The sender is not looked at, and may be null.
    void checkForUpdates(const QObject* sender);

    /// When the feed was last asked for; absent when it never was.
    [[nodiscard]] std::optional<QDateTime> lastUpdateCheckDate() const;

Q_SIGNALS:
    /// The check that the user asked for could not begin.
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
