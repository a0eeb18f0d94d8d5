#pragma once

#include "tests/common/Files.h"
#include "tests/common/TestCase.h"
#include "tests/update/UpdateFixture.h"
#include "update/UpdateSession.h"

#include <QDir>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <memory>

inline const QByteArray samplePackage(200'000, 'p');
inline constexpr auto feedType = "application/rss+xml; charset=utf-8";
inline constexpr auto packageType = "application/octet-stream";

/// Shared by the tests of sessions, searches and downloads. Each test has a new server on loopback, which uses TLS and
/// publishes version 2.0, and the configuration of a program of version 1.0.
class UpdateSessionTest : public TestCase
{
    Q_OBJECT

protected:
    using State = UpdateSession::State;

    CertificateAuthority m_authority;
    CertificateAuthority::Identity m_identity = m_authority.identity(CertificateAuthority::Kind::Good);
    SigningKey m_key;
    QTemporaryDir m_home;
    QString m_folder = m_home.filePath(QStringLiteral("updates"));
    std::unique_ptr<UpdateServer> m_server;

    [[nodiscard]] UpdateConfiguration configuration(const QUrl& feed) const
    {
        UpdateConfiguration configuration = configurationOf(feed, m_key, m_folder);
        configuration.limits.feedSize = 50'000;
        configuration.limits.redirects = 3;
        return configuration;
    }
    [[nodiscard]] UpdateConfiguration configuration() const
    {
        return configuration(m_server->address(QStringLiteral("/feed")));
    }

    // A feed that announces the package of the server.
    [[nodiscard]] QByteArray feed(const UpdateServer& server, const QByteArray& signature,
                                  qsizetype length = samplePackage.size()) const
    {
        return feedXml(itemXml({.url = server.address(QStringLiteral("/pelmora.deb")).toEncoded(),
                                .length = QByteArray::number(length),
                                .signature = signature}));
    }
    void publish(UpdateServer& server) const
    {
        server.setAnswer(QStringLiteral("/feed"), UpdateServer::ok(feedType, feed(server, m_key.sign(samplePackage))));
        server.setAnswer(QStringLiteral("/pelmora.deb"), UpdateServer::ok(packageType, samplePackage));
    }

    // A configuration with a short limit when the limit is tested.
    [[nodiscard]] UpdateConfiguration configurationFor(UpdateFailure failure) const
    {
        UpdateConfiguration changed = configuration();
        if (failure == UpdateFailure::TooSlow) {
            changed.limits.stall = std::chrono::milliseconds(250);
            changed.limits.feedTime = std::chrono::milliseconds(500);
            changed.limits.packageTime = std::chrono::milliseconds(500);
        }
        return changed;
    }

    // The state in which a search, or a download, ends.
    [[nodiscard]] static State searched(UpdateSession& session) { return ended(session, &UpdateSession::start); }
    [[nodiscard]] static State downloaded(UpdateSession& session) { return ended(session, &UpdateSession::download); }
    [[nodiscard]] static State ended(UpdateSession& session, void (UpdateSession::*begin)())
    {
        (session.*begin)();
        (void)QTest::qWaitFor([&session] { return isOver(session.state()); }, 20'000);
        return session.state();
    }

private:
    [[nodiscard]] static bool isOver(State state)
    {
        return state != State::Idle && state != State::Checking && state != State::Downloading &&
               state != State::Verifying;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_authority.isValid() && !m_identity.certificate.isNull(), "openssl could not make the certificates");
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.addCaCertificate(m_authority.certificate());
        QSslConfiguration::setDefaultConfiguration(configuration);
    }

    void init()
    {
        m_server = std::make_unique<UpdateServer>(m_identity);
        publish(*m_server);
    }

    void cleanup()
    {
        m_server.reset();
        QVERIFY(QDir(m_folder).removeRecursively());
    }
};
