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

/// A private certification authority, and its certificates for servers on 127.0.0.1.
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

    /// False when openssl has failed.
    [[nodiscard]] bool isValid() const { return !m_certificate.isNull(); }
    [[nodiscard]] const QSslCertificate& certificate() const { return m_certificate; }
    [[nodiscard]] Identity identity(Kind kind) const;

private:
    [[nodiscard]] bool run(const QStringList& arguments) const;
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    QSslCertificate m_certificate;
};

/// A web server on loopback with valid or faulty answers.
class UpdateServer final : public QObject
{
    Q_OBJECT

public:
    /// The server's behaviour after its answer.
    enum class Then
    {
        Close,
        /// Keeps the connection and sends nothing more.
        Stall,
        /// Breaks the connection.
        Reset,
        /// Repeats the last bytes as fast as they are received.
        Flood,
        /// Repeats the last bytes, one at a time.
        Drip
    };

    struct Answer
    {
        QByteArray head;
        QByteArray body;
        Then then = Then::Close;
        /// Whether the head has an end. If not, the body continues it.
        bool endsHead = true;
    };

    /// Plain HTTP without an identity, else HTTPS.
    explicit UpdateServer(const std::optional<CertificateAuthority::Identity>& identity = std::nullopt);
    ~UpdateServer() override;

    [[nodiscard]] QUrl address(const QString& path) const;
    void setAnswer(const QString& path, Answer answer) { m_answers.insert(path, std::move(answer)); }

    /// A valid answer.
    [[nodiscard]] static Answer ok(const QByteArray& type, const QByteArray& body);
    [[nodiscard]] static Answer redirect(const QUrl& target);

    /// The heads of the received requests, in order.
    [[nodiscard]] const QList<QByteArray>& requests() const { return m_requests; }
    /// Stops the server, as if it were switched off.
    void stop();

private:
    void accept();
    void read(QTcpSocket* socket);
    void answer(QTcpSocket* socket, const QByteArray& request);

    bool m_isEncrypted;
    QHash<QString, Answer> m_answers;
    QHash<QTcpSocket*, QByteArray> m_received;
    QList<QByteArray> m_requests;
    // The connections are destroyed before the records about them.
    std::unique_ptr<QTcpServer> m_server;
};
