#pragma once

#include "update/UpdateFailure.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;

/// One GET request with limits. It reveals nothing about the user or the machine: no cookies, no cache, no language, a
/// neutral name. Redirects must use HTTPS. Main thread; used once.
class UpdateTransfer final : public QObject
{
    Q_OBJECT

public:
    struct Bounds
    {
        qint64 size;            // bytes
        UpdateFailure tooLarge; // the failure when there are more
        int redirects;
        std::chrono::milliseconds stall;
        std::chrono::milliseconds time;
    };

    /// Checks the media type (lower case, without parameters) and the announced length (-1 if unknown) of an answer.
    using AnswerCheck = std::function<std::optional<UpdateFailure>(const QByteArray& type, qint64 length)>;
    /// Receives the content piece by piece.
    using Sink = std::function<std::optional<UpdateFailure>(const QByteArray& piece)>;

    /// The manager must outlive the transfer. A failure of the check or of the sink ends the transfer.
    UpdateTransfer(QNetworkAccessManager& manager, const Bounds& bounds, AnswerCheck check, Sink sink);
    /// Aborts a running transfer.
    ~UpdateTransfer() override;
    Q_DISABLE_COPY(UpdateTransfer)

    void start(const QUrl& address);

Q_SIGNALS:
    void progressed(qint64 received);
    /// Emitted once, as the last action. Without a failure all content was received.
    void finished(std::optional<UpdateFailure> failure);

private:
    void request(const QUrl& address);
    void readAnswer();
    void followRedirect();
    void readContent();
    void finish();
    void end(std::optional<UpdateFailure> failure);
    void drop();
    void dropReply();

    QNetworkAccessManager& m_manager;
    Bounds m_bounds;
    AnswerCheck m_check;
    Sink m_sink;
    QPointer<QNetworkReply> m_reply;
    QTimer m_stallTimer;
    QTimer m_timer;
    int m_redirects = 0;
    qint64 m_received = 0;
    bool m_isAnswered = false;
};
