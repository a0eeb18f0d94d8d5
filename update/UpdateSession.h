#pragma once

#include "update/UpdateFailure.h"
#include "update/UpdateFeed.h"
#include "update/UpdateSignature.h"
#include "update/client/UpdateConfiguration.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <thread>

class QNetworkAccessManager;
class UpdatePackage;
class UpdateTransfer;

/// One search for an update, and its download.
///
///   start: Checking -> UpToDate | Available | NeedsNewerSystem | Failed
///   download: Available -> Downloading -> Verifying -> Ready | Failed
///   cancelDownload: Downloading | Verifying -> Available
///
/// Main thread; needs a GUI application. When it is destroyed, only a package that is Ready is left.
class UpdateSession final : public QObject
{
    Q_OBJECT

public:
    enum class State
    {
        Idle,
        Checking,
        UpToDate,
        Available,
        NeedsNewerSystem,
        Downloading,
        Verifying,
        Ready,
        Failed
    };

    explicit UpdateSession(UpdateConfiguration configuration);
    ~UpdateSession() override;

    /// Fetches the feed; fails at once when the configuration does not allow a search.
    void start();
    void download();
    void cancelDownload();

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] const UpdateConfiguration& configuration() const { return m_configuration; }
    /// The version found, in the states that have one.
    [[nodiscard]] const UpdateItem& item() const { return m_item; }
    /// The reason, in the state Failed.
    [[nodiscard]] UpdateFailure failure() const { return m_failure; }
    /// The verified package, in the state Ready.
    [[nodiscard]] const QString& packagePath() const { return m_packagePath; }

Q_SIGNALS:
    void stateChanged();
    /// Received bytes of the package.
    void progressed(qint64 received);

private:
    [[nodiscard]] std::optional<UpdateFailure> findObstacle() const;
    void fetchFeed();
    void readFeed(std::optional<UpdateFailure> failure);
    void verify(std::optional<UpdateFailure> failure);
    void acceptPackage(int download, std::optional<UpdateFailure> failure);
    void dropDownload();
    void setState(State state);
    void fail(UpdateFailure failure);

    UpdateConfiguration m_configuration;
    State m_state = State::Idle;
    UpdateFailure m_failure = UpdateFailure::NoFeed;
    UpdatePublicKey m_publicKey = {};
    UpdateItem m_item;
    QString m_packagePath;
    QByteArray m_feed;
    // Made at the first use of the network.
    std::unique_ptr<QNetworkAccessManager> m_network;
    std::unique_ptr<UpdateTransfer> m_transfer;
    std::unique_ptr<UpdatePackage> m_package;
    // The number of the current download: results of earlier verifications are ignored.
    int m_download = 0;
    // The thread gets copies of path, signature and key, and posts its result to the main queue.
    std::jthread m_verification;
};
