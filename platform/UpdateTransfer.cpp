#include "platform/UpdateTransfer.h"

#include "platform/UpdateAddress.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Bytes that wait to be taken.
constexpr qint64 bufferSize = qint64{64} * 1024;
constexpr int statusOk = 200;

struct NetworkFailure
{
    QNetworkReply::NetworkError error;
    UpdateFailure failure;
};

constexpr std::array networkFailures{
    NetworkFailure{QNetworkReply::SslHandshakeFailedError, UpdateFailure::Certificate},
    NetworkFailure{QNetworkReply::TooManyRedirectsError, UpdateFailure::TooManyRedirects},
    NetworkFailure{QNetworkReply::InsecureRedirectError, UpdateFailure::InsecureRedirect},
    NetworkFailure{QNetworkReply::RemoteHostClosedError, UpdateFailure::Interrupted},
    NetworkFailure{QNetworkReply::ConnectionRefusedError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::HostNotFoundError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::TimeoutError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::TemporaryNetworkFailureError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::NetworkSessionFailedError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::UnknownNetworkError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::ProxyConnectionRefusedError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::ProxyConnectionClosedError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::ProxyNotFoundError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::ProxyTimeoutError, UpdateFailure::Unreachable},
    NetworkFailure{QNetworkReply::ProxyAuthenticationRequiredError, UpdateFailure::Unreachable},
};

// Whatever else goes wrong is the server's doing.
UpdateFailure failureOf(QNetworkReply::NetworkError error)
{
    const auto* const row = std::ranges::find(networkFailures, error, &NetworkFailure::error);
    return row == networkFailures.end() ? UpdateFailure::ServerError : row->failure;
}

QNetworkRequest requestFor(const QUrl& address, int redirects)
{
    QNetworkRequest request(address);
    // The same from everybody: the defaults would tell the user's language.
    request.setHeader(QNetworkRequest::UserAgentHeader, u"Pelmora"_s);
    request.setRawHeader("Accept-Language", "*");
    // What is received is what is counted and verified, not something to unpack.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(redirects);
    return request;
}

} // namespace

UpdateTransfer::UpdateTransfer(QNetworkAccessManager& manager, const Bounds& bounds, AnswerCheck check, Sink sink)
    : m_manager(manager)
    , m_bounds(bounds)
    , m_check(std::move(check))
    , m_sink(std::move(sink))
{
    for (QTimer* timer : {&m_stallTimer, &m_timer}) {
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, [this] { end(UpdateFailure::TooSlow); });
    }
}

UpdateTransfer::~UpdateTransfer()
{
    drop();
}

void UpdateTransfer::start(const QUrl& address)
{
    m_reply = m_manager.get(requestFor(address, m_bounds.redirects));
    // A server that is faster than this program waits for it.
    m_reply->setReadBufferSize(bufferSize);
    connect(m_reply, &QNetworkReply::redirected, this, &UpdateTransfer::checkRedirect);
    connect(m_reply, &QNetworkReply::readyRead, this, &UpdateTransfer::readContent);
    connect(m_reply, &QNetworkReply::finished, this, &UpdateTransfer::finish);
    m_stallTimer.start(m_bounds.stall);
    m_timer.start(m_bounds.time);
}

void UpdateTransfer::checkRedirect(const QUrl& address)
{
    if (address.scheme() != "https"_L1 || address.host().isEmpty())
        return end(UpdateFailure::InsecureRedirect);
    Q_EMIT m_reply->redirectAllowed();
}

void UpdateTransfer::readAnswer()
{
    m_isAnswered = true;
    if (m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() != statusOk)
        return end(UpdateFailure::ServerError);
    const QByteArray type = m_reply->rawHeader("Content-Type").split(';').constFirst().trimmed().toLower();
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    if (const auto failure = m_check(type, length.isValid() ? length.toLongLong() : -1))
        end(failure);
}

void UpdateTransfer::readContent()
{
    if (!m_isAnswered)
        readAnswer();
    if (!m_reply)
        return;
    m_stallTimer.start();
    const QByteArray piece = m_reply->readAll();
    if (piece.isEmpty())
        return;
    m_received += piece.size();
    if (m_received > m_bounds.size)
        return end(m_bounds.tooLarge);
    if (const auto failure = m_sink(piece))
        return end(failure);
    Q_EMIT progressed(m_received);
}

void UpdateTransfer::finish()
{
    const QNetworkReply::NetworkError error = m_reply->error();
    if (error != QNetworkReply::NoError)
        return end(failureOf(error));
    readContent();
    if (!m_reply)
        return;
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    end(length.isValid() && length.toLongLong() != m_received ? std::optional(UpdateFailure::Interrupted)
                                                              : std::nullopt);
}

void UpdateTransfer::end(std::optional<UpdateFailure> failure)
{
    drop();
    Q_EMIT finished(failure);
}

void UpdateTransfer::drop()
{
    m_stallTimer.stop();
    m_timer.stop();
    QNetworkReply* reply = m_reply;
    m_reply.clear();
    if (reply == nullptr)
        return;
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}
