#include "update/UpdateTransfer.h"

#include "update/UpdateAddress.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Bytes that are received but not read.
constexpr qint64 bufferSize = qint64{64} * 1024;
constexpr int statusOk = 200;
constexpr std::array redirectStatuses{301, 302, 303, 307, 308};

struct NetworkFailure
{
    QNetworkReply::NetworkError error;
    UpdateFailure failure;
};

constexpr std::array networkFailures{
    NetworkFailure{QNetworkReply::SslHandshakeFailedError, UpdateFailure::Certificate},
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

// All other errors are the server's.
UpdateFailure failureOf(QNetworkReply::NetworkError error)
{
    const auto* const row = std::ranges::find(networkFailures, error, &NetworkFailure::error);
    return row == networkFailures.end() ? UpdateFailure::ServerError : row->failure;
}

QNetworkRequest requestFor(const QUrl& address)
{
    QNetworkRequest request(address);
    // Neutral values: the defaults contain the user's language.
    request.setHeader(QNetworkRequest::UserAgentHeader, u"Pelmora"_s);
    request.setRawHeader("Accept-Language", "*");
    // Not compressed: the received bytes are counted and verified.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
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
    m_timer.start(m_bounds.time);
    request(address);
}

void UpdateTransfer::request(const QUrl& address)
{
    m_isAnswered = false;
    m_reply = m_manager.get(requestFor(address));
    // Limits the buffer when the server is faster.
    m_reply->setReadBufferSize(bufferSize);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &UpdateTransfer::readAnswer);
    connect(m_reply, &QNetworkReply::readyRead, this, &UpdateTransfer::readContent);
    connect(m_reply, &QNetworkReply::finished, this, &UpdateTransfer::finish);
    m_stallTimer.start(m_bounds.stall);
}

void UpdateTransfer::readAnswer()
{
    if (m_isAnswered)
        return;
    m_isAnswered = true;
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (std::ranges::find(redirectStatuses, status) != redirectStatuses.end())
        return followRedirect();
    if (status != statusOk)
        return end(UpdateFailure::ServerError);
    const QByteArray type = m_reply->rawHeader("Content-Type").split(';').constFirst().trimmed().toLower();
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    if (const auto failure = m_check(type, length.isValid() ? length.toLongLong() : -1))
        end(failure);
}

void UpdateTransfer::followRedirect()
{
    const QByteArray location = m_reply->rawHeader("Location");
    if (location.isEmpty())
        return end(UpdateFailure::ServerError);
    const QUrl target = m_reply->url().resolved(QUrl::fromEncoded(location, QUrl::StrictMode));
    if (!isSafeRedirect(target))
        return end(UpdateFailure::InsecureRedirect);
    if (++m_redirects > m_bounds.redirects)
        return end(UpdateFailure::TooManyRedirects);
    dropReply();
    request(target);
}

void UpdateTransfer::readContent()
{
    const QNetworkReply* reply = m_reply;
    readAnswer();
    // The answer may have been refused or redirected.
    if (m_reply != reply)
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
    const QNetworkReply* reply = m_reply;
    readContent();
    if (m_reply != reply)
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
    dropReply();
}

void UpdateTransfer::dropReply()
{
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    // Later, because the reply may be sending a signal. Deleting it aborts the request.
    m_reply->deleteLater();
    m_reply.clear();
}
