#pragma once

#include "update/UpdateFailure.h"
#include "update/UpdateFeed.h"
#include "update/UpdateSignature.h"
#include "update/client/UpdateConfiguration.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <thread>

class QNetworkAccessManager;
class UpdatePackage;
class UpdateTransfer;

/// One search for an update, and the download of what it found.
///
///   start: Checking -> UpToDate | Available | NeedsNewerSystem | Failed
///   download: Available -> Downloading -> Verifying -> Ready | Failed
///   cancelDownload: Downloading | Verifying -> Available
///
/// Main thread; needs a GUI application. Dropped at any moment, it leaves nothing behind but a package that was Ready.
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

    /// Asks the feed. Fails at once, and asks nobody, where the configuration leaves nothing to ask.
    void start();
    void download();
    void cancelDownload();

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] const UpdateConfiguration& configuration() const { return m_configuration; }
    /// The version found; only in the states after Checking that tell of one.
    [[nodiscard]] const UpdateItem& item() const { return m_item; }
    /// Why it Failed.
    [[nodiscard]] UpdateFailure failure() const { return m_failure; }
    /// Where the verified package is, once Ready.
    [[nodiscard]] const QString& packagePath() const { return m_packagePath; }

Q_SIGNALS:
    void stateChanged();
    /// How much of the package has come, in bytes.
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
    // Made when it is first needed: programs that look for no update never set the network up.
    std::unique_ptr<QNetworkAccessManager> m_network;
    std::unique_ptr<UpdateTransfer> m_transfer;
    std::unique_ptr<UpdatePackage> m_package;
    // Tells the result of a verification that was cancelled from that of the present one.
    int m_download = 0;
    // Shares nothing: it is given the path, the signature and the key, and its result comes by the main queue.
    std::jthread m_verification;
};
