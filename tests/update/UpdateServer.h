#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QSslCertificate>
#include <QSslKey>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>
#include <optional>

class QTcpServer;
class QTcpSocket;

/// A certification authority of the test's own, and the certificates that it gives to servers on 127.0.0.1.
class CertificateAuthority
{
public:
    enum class Kind
    {
        Good,
        Expired,
        OfAnotherName,
        SelfSigned
    };

    struct Identity
    {
        QSslCertificate certificate;
        QSslKey key;
    };

    CertificateAuthority();

    /// Whether the system's tools could make it.
    [[nodiscard]] bool isValid() const { return !m_certificate.isNull(); }
    [[nodiscard]] const QSslCertificate& certificate() const { return m_certificate; }
    [[nodiscard]] Identity identity(Kind kind) const;

private:
    [[nodiscard]] bool run(const QStringList& arguments) const;
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    QSslCertificate m_certificate;
};

/// A web server on loopback that answers well or badly, as it is told.
class UpdateServer final : public QObject
{
    Q_OBJECT

public:
    /// What it does once it has sent its answer.
    enum class Then
    {
        Close,
        /// Keeps the connection and sends nothing more.
        Stall,
        /// Breaks the connection.
        Reset,
        /// Sends the last bytes again and again, as fast as they are taken.
        Flood,
        /// Sends the last bytes again and again, one after another.
        Drip
    };

    struct Answer
    {
        QByteArray head;
        QByteArray body;
        Then then = Then::Close;
        /// Whether the head has an end, or the body is more of it.
        bool endsHead = true;
    };

    /// Over plain HTTP without an identity, else over HTTPS.
    explicit UpdateServer(const std::optional<CertificateAuthority::Identity>& identity = std::nullopt);
    ~UpdateServer() override;

    [[nodiscard]] QUrl address(const QString& path) const;
    void setAnswer(const QString& path, Answer answer) { m_answers.insert(path, std::move(answer)); }

    /// A sound answer.
    [[nodiscard]] static Answer ok(const QByteArray& type, const QByteArray& body);
    [[nodiscard]] static Answer redirect(const QUrl& target);

    /// The heads of the requests that came, in order.
    [[nodiscard]] const QList<QByteArray>& requests() const { return m_requests; }
    /// Stops, as a server does that is switched off.
    void stop();

private:
    void accept();
    void read(QTcpSocket* socket);
    void answer(QTcpSocket* socket, const QByteArray& request);

    bool m_isEncrypted;
    QHash<QString, Answer> m_answers;
    QHash<QTcpSocket*, QByteArray> m_received;
    QList<QByteArray> m_requests;
    // Its connections end before what is noted about them.
    std::unique_ptr<QTcpServer> m_server;
};
