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

/// One GET of an address, within bounds. It says the same about every user and machine: no cookies, no cache, no
/// language, a neutral name; redirects lead to HTTPS only. Main thread; one use.
class UpdateTransfer final : public QObject
{
    Q_OBJECT

public:
    struct Bounds
    {
        qint64 size;            // bytes
        UpdateFailure tooLarge; // what it is when there are more
        int redirects;
        std::chrono::milliseconds stall;
        std::chrono::milliseconds time;
    };

    /// Judges the server's answer by its media type, in lower case and without parameters, and its announced length,
    /// -1 when there is none.
    using AnswerCheck = std::function<std::optional<UpdateFailure>(const QByteArray& type, qint64 length)>;
    /// Takes the content, piece by piece.
    using Sink = std::function<std::optional<UpdateFailure>(const QByteArray& piece)>;

    /// The manager must outlive the transfer. A failure of the check or the sink ends it.
    UpdateTransfer(QNetworkAccessManager& manager, const Bounds& bounds, AnswerCheck check, Sink sink);
    /// Drops the transfer when it still runs.
    ~UpdateTransfer() override;
    UpdateTransfer(const UpdateTransfer&) = delete;
    UpdateTransfer& operator=(const UpdateTransfer&) = delete;

    void start(const QUrl& address);

Q_SIGNALS:
    void progressed(qint64 received);
    /// The end, once, and as the last thing that the transfer does; without a failure all of the content was taken.
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
