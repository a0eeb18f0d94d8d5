#include "update/UpdateSession.h"

#include "platform/MainQueue.h"
#include "update/UpdateAddress.h"
#include "update/UpdatePackage.h"
#include "update/UpdateTransfer.h"
#include "update/VersionComparison.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QPointer>
#include <QSslSocket>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array feedTypes{"application/rss+xml"_L1, "application/xml"_L1, "text/xml"_L1};

std::optional<UpdateFailure> findTypeFault(const QByteArray& type)
{
    return std::ranges::find(feedTypes, QLatin1StringView(type)) == feedTypes.end()
               ? std::optional(UpdateFailure::WrongType)
               : std::nullopt;
}

// The desktop's proxy, but none for loopback addresses.
void chooseProxy(QNetworkAccessManager& network, const QUrl& address)
{
    network.setProxy(isLoopbackAddress(address) ? QNetworkProxy(QNetworkProxy::NoProxy)
                                                : QNetworkProxy(QNetworkProxy::DefaultProxy));
}

} // namespace

UpdateSession::UpdateSession(UpdateConfiguration configuration)
    : m_configuration(std::move(configuration))
{
}

UpdateSession::~UpdateSession() = default;

void UpdateSession::start()
{
    if (m_state != State::Idle)
        return;
    if (const std::optional<UpdateFailure> obstacle = findObstacle())
        return fail(*obstacle);
    m_publicKey = *publicKeyFromBase64(m_configuration.publicKey);
    setState(State::Checking);
    fetchFeed();
}

std::optional<UpdateFailure> UpdateSession::findObstacle() const
{
    if (m_configuration.isPackaged)
        return UpdateFailure::Packaged;
    if (!m_configuration.feed)
        return UpdateFailure::NoFeed;
    if (!isSafeFeedAddress(*m_configuration.feed))
        return UpdateFailure::UnsafeFeedAddress;
    if (!publicKeyFromBase64(m_configuration.publicKey))
        return UpdateFailure::NoPublicKey;
    // Every version would be newer than an empty one.
    if (!isVersion(m_configuration.version))
        return UpdateFailure::UnknownVersion;
    if (!QSslSocket::supportsSsl())
        return UpdateFailure::NoEncryption;
    return std::nullopt;
}

void UpdateSession::fetchFeed()
{
    const UpdateLimits& limits = m_configuration.limits;
    m_network = std::make_unique<QNetworkAccessManager>();
    chooseProxy(*m_network, *m_configuration.feed);
    const UpdateTransfer::Bounds bounds{limits.feedSize, UpdateFailure::FeedTooLarge, limits.redirects, limits.stall,
                                        limits.feedTime};
    m_transfer = std::make_unique<UpdateTransfer>(
        *m_network, bounds, [](const QByteArray& type, qint64) { return findTypeFault(type); },
        [this](const QByteArray& piece) {
            m_feed += piece;
            return std::optional<UpdateFailure>();
        });
    connect(m_transfer.get(), &UpdateTransfer::finished, this, &UpdateSession::readFeed);
    m_transfer->start(*m_configuration.feed);
}

void UpdateSession::readFeed(std::optional<UpdateFailure> failure)
{
    m_transfer.release()->deleteLater();
    const QByteArray xml = std::exchange(m_feed, {});
    if (failure)
        return fail(*failure);
    const auto feed = UpdateFeed::parse(xml, *m_configuration.feed, m_configuration.limits.packageSize);
    if (!feed)
        return fail(feed.error());
    const auto choice = chooseUpdate(*feed, m_configuration.version, m_configuration.systemVersion);
    if (!choice)
        return fail(choice.error());

    m_item = choice->item;
    switch (choice->kind) {
    case UpdateChoice::Kind::UpToDate:
        return setState(State::UpToDate);
    case UpdateChoice::Kind::Available:
        return setState(State::Available);
    case UpdateChoice::Kind::NeedsNewerSystem:
        return setState(State::NeedsNewerSystem);
    }
}

void UpdateSession::download()
{
    if (m_state != State::Available)
        return;
    auto package = UpdatePackage::create(m_configuration.folder, m_item.packageName);
    if (!package)
        return fail(package.error());
    m_package = std::move(*package);
    ++m_download;

    const UpdateLimits& limits = m_configuration.limits;
    chooseProxy(*m_network, m_item.package);
    const UpdateTransfer::Bounds bounds{m_item.length, UpdateFailure::WrongLength, limits.redirects, limits.stall,
                                        limits.packageTime};
    m_transfer = std::make_unique<UpdateTransfer>(
        *m_network, bounds,
        [expected = m_item.length](const QByteArray&, qint64 length) {
            return length >= 0 && length != expected ? std::optional(UpdateFailure::WrongLength) : std::nullopt;
        },
        [this](const QByteArray& piece) { return m_package->write(piece); });
    connect(m_transfer.get(), &UpdateTransfer::progressed, this, &UpdateSession::progressed);
    connect(m_transfer.get(), &UpdateTransfer::finished, this, &UpdateSession::verify);
    setState(State::Downloading);
    m_transfer->start(m_item.package);
}

void UpdateSession::verify(std::optional<UpdateFailure> failure)
{
    m_transfer.release()->deleteLater();
    m_package->close();
    if (!failure && QFile(m_package->path()).size() != m_item.length)
        failure = UpdateFailure::WrongLength;
    if (failure)
        return fail(*failure);

    setState(State::Verifying);
    // On a thread: a large package takes seconds.
    m_verification = std::jthread([session = QPointer(this), download = m_download, path = m_package->path(),
                                   signature = m_item.signature, key = m_publicKey] {
        const std::optional<UpdateFailure> fault = findSignatureFault(path, signature, key);
        postToMainQueue([session, download, fault] {
            if (session)
                session->acceptPackage(download, fault);
        });
    });
}

void UpdateSession::acceptPackage(int download, std::optional<UpdateFailure> failure)
{
    if (m_state != State::Verifying || download != m_download)
        return;
    if (failure)
        return fail(*failure);
    m_packagePath = m_package->path();
    m_package->keep();
    setState(State::Ready);
}

void UpdateSession::cancelDownload()
{
    if (m_state != State::Downloading && m_state != State::Verifying)
        return;
    dropDownload();
    setState(State::Available);
}

void UpdateSession::dropDownload()
{
    m_transfer.reset();
    m_package.reset();
}

void UpdateSession::setState(State state)
{
    m_state = state;
    Q_EMIT stateChanged();
}

void UpdateSession::fail(UpdateFailure failure)
{
    dropDownload();
    m_failure = failure;
    setState(State::Failed);
}
