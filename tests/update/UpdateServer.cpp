#include "tests/update/UpdateServer.h"

#include "tests/common/Files.h"

#include <QFile>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslServer>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 floodAhead = qint64{256} * 1024;

QStringList newKey(const QString& path)
{
    return {u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s, u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-keyout"_s, path};
}

qint64 bytesWaitingIn(const QTcpSocket* socket)
{
    const auto* encrypted = qobject_cast<const QSslSocket*>(socket);
    return socket->bytesToWrite() + (encrypted == nullptr ? 0 : encrypted->encryptedBytesToWrite());
}

// Breaks the connection after all earlier bytes have been sent.
void reset(QTcpSocket* socket)
{
    auto* timer = new QTimer(socket);
    QObject::connect(timer, &QTimer::timeout, socket, [socket] {
        if (bytesWaitingIn(socket) == 0)
            socket->abort();
    });
    timer->start(0ms);
}

void repeat(QTcpSocket* socket, const QByteArray& bytes, std::chrono::milliseconds interval)
{
    const auto write = [socket, bytes] {
        if (bytesWaitingIn(socket) < floodAhead)
            socket->write(bytes);
    };
    auto* timer = new QTimer(socket);
    QObject::connect(timer, &QTimer::timeout, socket, write);
    timer->start(interval);
}

} // namespace

CertificateAuthority::CertificateAuthority()
{
    const QStringList arguments = QStringList{u"req"_s, u"-x509"_s} + newKey(path(u"ca.key"_s)) +
                                  QStringList{u"-out"_s, path(u"ca.pem"_s), u"-subj"_s, u"/CN=Tests"_s};
    if (run(arguments))
        m_certificate = QSslCertificate(contentOf(path(u"ca.pem"_s)));
}

CertificateAuthority::Identity CertificateAuthority::identity(Kind kind) const
{
    const QString name =
        kind == Kind::OfAnotherName ? u"subjectAltName=DNS:other.example"_s : u"subjectAltName=IP:127.0.0.1"_s;
    const QString key = path(u"server.key"_s);
    const QString request = path(u"server.csr"_s);
    const QString certificate = path(u"server.pem"_s);
    const QStringList signer = kind == Kind::SelfSigned ? QStringList{u"-signkey"_s, key}
                                                        : QStringList{u"-CA"_s, path(u"ca.pem"_s), u"-CAkey"_s,
                                                                      path(u"ca.key"_s), u"-CAcreateserial"_s};
    const bool isMade =
        run(QStringList{u"req"_s, u"-new"_s} + newKey(key) +
            QStringList{u"-out"_s, request, u"-subj"_s, u"/CN=Server"_s, u"-addext"_s, name}) &&
        run(QStringList{u"x509"_s, u"-req"_s, u"-in"_s, request, u"-out"_s, certificate, u"-copy_extensions"_s,
                        u"copy"_s, u"-days"_s, kind == Kind::Expired ? u"-1"_s : u"2"_s} +
            signer);
    if (!isMade)
        return Identity();
    return Identity{QSslCertificate(contentOf(certificate)), QSslKey(contentOf(key), QSsl::Ec)};
}

bool CertificateAuthority::run(const QStringList& arguments) const
{
    QProcess openssl;
    openssl.start(u"openssl"_s, arguments);
    return openssl.waitForFinished() && openssl.exitStatus() == QProcess::NormalExit && openssl.exitCode() == 0;
}

UpdateServer::UpdateServer(const std::optional<CertificateAuthority::Identity>& identity)
    : m_isEncrypted(identity.has_value())
{
    if (identity) {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(identity->certificate);
        configuration.setPrivateKey(identity->key);
        auto server = std::make_unique<QSslServer>();
        server->setSslConfiguration(configuration);
        m_server = std::move(server);
    } else {
        m_server = std::make_unique<QTcpServer>();
    }
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, &UpdateServer::accept);
    if (!m_server->listen(QHostAddress::LocalHost))
        qFatal("The server cannot listen.");
}

UpdateServer::~UpdateServer() = default;

QUrl UpdateServer::address(const QString& path) const
{
    QUrl address;
    address.setScheme(m_isEncrypted ? u"https"_s : u"http"_s);
    address.setHost(u"127.0.0.1"_s);
    address.setPort(m_server->serverPort());
    address.setPath(path);
    return address;
}

UpdateServer::Answer UpdateServer::ok(const QByteArray& type, const QByteArray& body)
{
    return {"HTTP/1.1 200 OK\r\nContent-Type: " + type + "\r\nContent-Length: " + QByteArray::number(body.size()) +
                "\r\nSet-Cookie: visit=1\r\n",
            body};
}

UpdateServer::Answer UpdateServer::redirect(const QUrl& target)
{
    return {"HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " + target.toEncoded() + "\r\n", {}};
}

void UpdateServer::stop()
{
    m_server->close();
}

void UpdateServer::accept()
{
    while (QTcpSocket* socket = m_server->nextPendingConnection()) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QObject::destroyed, this, [this, socket] { m_received.remove(socket); });
        read(socket);
    }
}

void UpdateServer::read(QTcpSocket* socket)
{
    QByteArray& received = m_received[socket];
    received += socket->readAll();
    if (!received.contains("\r\n\r\n"))
        return;
    const QByteArray request = std::exchange(received, {});
    m_requests.append(request);
    answer(socket, request);
}

void UpdateServer::answer(QTcpSocket* socket, const QByteArray& request)
{
    const QString path = QUrl::fromEncoded(request.split(' ').value(1)).path();
    const Answer answer = m_answers.value(path, {"HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n", {}});
    socket->write(answer.head + (answer.endsHead ? "Connection: close\r\n\r\n" : "") + answer.body);
    switch (answer.then) {
    case Then::Close:
        socket->disconnectFromHost();
        break;
    case Then::Stall:
        break;
    case Then::Reset:
        reset(socket);
        break;
    case Then::Flood:
        repeat(socket, answer.body, 0ms);
        break;
    case Then::Drip:
        repeat(socket, answer.body, 10ms);
        break;
    }
}
