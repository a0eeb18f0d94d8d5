#include "platform/update/UpdateSession.h"
#include "tests/platform/FileSizeLimit.h"
#include "tests/platform/update/FeedXml.h"
#include "tests/platform/update/SigningKey.h"
#include "tests/platform/update/UpdateServer.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using State = UpdateSession::State;
using Then = UpdateServer::Then;
using Answer = UpdateServer::Answer;

namespace {

const QByteArray package(200'000, 'p');
constexpr auto rss = "application/rss+xml; charset=utf-8";
constexpr auto binary = "application/octet-stream";
constexpr auto okHead = "HTTP/1.1 200 OK\r\nContent-Type: application/rss+xml\r\n";

QStringList entriesBelow(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

bool isOver(State state)
{
    return state != State::Idle && state != State::Checking && state != State::Downloading && state != State::Verifying;
}

} // namespace

/// The search and the download, with real servers on loopback, over TLS except where the test is about plain HTTP.
class tst_UpdateSession : public QObject
{
    Q_OBJECT

private:
    CertificateAuthority m_authority;
    CertificateAuthority::Identity m_identity = m_authority.identity(CertificateAuthority::Kind::Good);
    SigningKey m_key;
    QTemporaryDir m_home;
    QString m_folder = m_home.filePath(u"updates"_s);
    std::unique_ptr<UpdateServer> m_server;

    [[nodiscard]] UpdateConfiguration configuration(const QUrl& feed) const
    {
        UpdateConfiguration configuration;
        configuration.feed = feed;
        configuration.publicKey = m_key.publicKey();
        configuration.version = u"1.0"_s;
        configuration.shortVersion = u"1.0"_s;
        configuration.systemVersion = u"2.36"_s;
        configuration.folder = m_folder;
        configuration.limits.feedSize = 50'000;
        configuration.limits.redirects = 3;
        return configuration;
    }
    [[nodiscard]] UpdateConfiguration configuration() const { return configuration(m_server->address(u"/feed"_s)); }

    // A feed that announces the package of the server.
    [[nodiscard]] QByteArray feed(const UpdateServer& server, const QByteArray& signature,
                                  qsizetype length = package.size()) const
    {
        return feedXml(itemXml({.url = server.address(u"/pelmora.deb"_s).toEncoded(),
                                .length = QByteArray::number(length),
                                .signature = signature}));
    }
    void publish(UpdateServer& server) const
    {
        server.setAnswer(u"/feed"_s, UpdateServer::ok(rss, feed(server, m_key.sign(package))));
        server.setAnswer(u"/pelmora.deb"_s, UpdateServer::ok(binary, package));
    }

    // A configuration whose patience ends soon where that is what is tested.
    [[nodiscard]] UpdateConfiguration configurationFor(UpdateFailure failure) const
    {
        UpdateConfiguration changed = configuration();
        if (failure == UpdateFailure::TooSlow) {
            changed.limits.stall = 250ms;
            changed.limits.feedTime = 500ms;
            changed.limits.packageTime = 500ms;
        }
        return changed;
    }

    // The state in which a search, or a download, ends.
    [[nodiscard]] static State searched(UpdateSession& session) { return ended(session, &UpdateSession::start); }
    [[nodiscard]] static State downloaded(UpdateSession& session) { return ended(session, &UpdateSession::download); }
    [[nodiscard]] static State ended(UpdateSession& session, void (UpdateSession::*begin)())
    {
        QSignalSpy changes(&session, &UpdateSession::stateChanged);
        (session.*begin)();
        while (!isOver(session.state()) && changes.wait(20'000)) {
        }
        return session.state();
    }

    // Why a search fails; the failure's text where it does, else the number of the state that it ended in.
    [[nodiscard]] static QString failureOf(const UpdateConfiguration& configuration)
    {
        UpdateSession session(configuration);
        const State state = searched(session);
        return state == State::Failed ? textOf(session.failure()).toString() : QString::number(static_cast<int>(state));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_authority.isValid() && !m_identity.certificate.isNull(), "openssl makes no certificates");
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.addCaCertificate(m_authority.certificate());
        QSslConfiguration::setDefaultConfiguration(configuration);
    }

    void init()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        m_server = std::make_unique<UpdateServer>(m_identity);
        publish(*m_server);
    }

    void cleanup()
    {
        m_server.reset();
        QVERIFY(QDir(m_folder).removeRecursively());
    }

    void anUpdateIsFoundDownloadedAndVerified()
    {
        UpdateSession session(configuration());
        QList<State> states;
        connect(&session, &UpdateSession::stateChanged, this, [&] { states.append(session.state()); });
        QSignalSpy progress(&session, &UpdateSession::progressed);
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(session.item().version, u"2.0"_s);
        QCOMPARE(entriesBelow(m_home.path()), QStringList());

        QCOMPARE(downloaded(session), State::Ready);
        const QList<State> expected{State::Checking, State::Available, State::Downloading, State::Verifying,
                                    State::Ready};
        QCOMPARE(states, expected);
        QCOMPARE(progress.last().first().toLongLong(), package.size());
        QFile file(session.packagePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), package);
        QCOMPARE(QFileInfo(file).fileName(), u"pelmora.deb"_s);
    }

    void aPackageThatIsReadyOutlivesItsSession()
    {
        QString path;
        {
            UpdateSession session(configuration());
            QCOMPARE(searched(session), State::Available);
            QCOMPARE(downloaded(session), State::Ready);
            path = session.packagePath();
        }
        QVERIFY(QFileInfo::exists(path));
    }

    void plainHttpOfThisMachineWillDo()
    {
        UpdateServer plain;
        publish(plain);
        UpdateSession session(configuration(plain.address(u"/feed"_s)));
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Ready);
    }

    void whatHasNothingToAskAsksNobody_data()
    {
        QTest::addColumn<std::function<void(UpdateConfiguration&)>>("change");
        QTest::addColumn<UpdateFailure>("failure");
        using Change = std::function<void(UpdateConfiguration&)>;
        QTest::newRow("no feed") << Change([](UpdateConfiguration& c) { c.feed.reset(); }) << UpdateFailure::NoFeed;
        QTest::newRow("package manager") << Change([](UpdateConfiguration& c) { c.isPackaged = true; })
                                         << UpdateFailure::Packaged;
        QTest::newRow("plain HTTP") << Change([](UpdateConfiguration& c) {
            c.feed = QUrl(u"http://updates.morvel.example/"_s);
        }) << UpdateFailure::UnsafeFeedAddress;
        QTest::newRow("broken address") << Change([](UpdateConfiguration& c) { c.feed = QUrl(); })
                                        << UpdateFailure::UnsafeFeedAddress;
        QTest::newRow("no key") << Change([](UpdateConfiguration& c) { c.publicKey.clear(); })
                                << UpdateFailure::NoPublicKey;
        QTest::newRow("broken key") << Change([](UpdateConfiguration& c) { c.publicKey = "a2V5"; })
                                    << UpdateFailure::NoPublicKey;
        QTest::newRow("no version") << Change([](UpdateConfiguration& c) { c.version.clear(); })
                                    << UpdateFailure::UnknownVersion;
    }
    void whatHasNothingToAskAsksNobody()
    {
        QFETCH(const std::function<void(UpdateConfiguration&)>, change);
        QFETCH(const UpdateFailure, failure);
        UpdateConfiguration changed = configuration();
        change(changed);
        UpdateSession session(changed);
        session.start();
        QCOMPARE(session.state(), State::Failed);
        QCOMPARE(session.failure(), failure);
        QCOMPARE(m_server->requests().size(), 0);
    }

    void aBadFeedIsRefused_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<UpdateFailure>("failure");
        const QByteArray sound = feedXml(itemXml({}));
        QTest::newRow("not XML") << UpdateServer::ok(rss, "Bonjour") << UpdateFailure::NotAFeed;
        QTest::newRow("empty") << UpdateServer::ok(rss, "") << UpdateFailure::NotAFeed;
        QTest::newRow("no versions") << UpdateServer::ok(rss, feedXml({})) << UpdateFailure::EmptyFeed;
        QTest::newRow("unsigned") << UpdateServer::ok(rss, feedXml(itemXml({.signature = {}})))
                                  << UpdateFailure::Unsigned;
        QTest::newRow("huge") << UpdateServer::ok(rss, QByteArray(50'001, ' ')) << UpdateFailure::FeedTooLarge;
        QTest::newRow("endless") << Answer{okHead, QByteArray(10'000, ' '), Then::Flood} << UpdateFailure::FeedTooLarge;
        QTest::newRow("endless head") << Answer{okHead, "X: y\r\n", Then::Drip, false} << UpdateFailure::TooSlow;
        QTest::newRow("huge head") << Answer{okHead, "X: y\r\n", Then::Flood, false} << UpdateFailure::TooSlow;
        QTest::newRow("endless line of the head")
            << Answer{"HTTP/1.1 200 ", QByteArray(1000, 'x'), Then::Flood, false} << UpdateFailure::TooSlow;
        QTest::newRow("slow") << Answer{okHead, " ", Then::Drip} << UpdateFailure::TooSlow;
        QTest::newRow("stalled") << Answer{okHead, " ", Then::Stall} << UpdateFailure::TooSlow;
        QTest::newRow("wrong content type") << UpdateServer::ok("text/html", sound) << UpdateFailure::WrongType;
        QTest::newRow("no content type") << Answer{"HTTP/1.1 200 OK\r\n", sound} << UpdateFailure::WrongType;
        QTest::newRow("error") << Answer{"HTTP/1.1 500 Oops\r\n", sound} << UpdateFailure::ServerError;
        QTest::newRow("password wanted")
            << Answer{"HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"x\"\r\nContent-Length: 0\r\n", {}}
            << UpdateFailure::ServerError;
        QTest::newRow("a part only") << Answer{"HTTP/1.1 206 Partial\r\nContent-Type: text/xml\r\n", sound}
                                     << UpdateFailure::ServerError;
        QTest::newRow("no content") << Answer{"HTTP/1.1 204 No\r\n", {}} << UpdateFailure::ServerError;
        QTest::newRow("not HTTP") << Answer{"bonjour\r\n", {}} << UpdateFailure::Interrupted;
        QTest::newRow("gone in the middle")
            << Answer{okHead + "Content-Length: 5000\r\n"_ba, sound} << UpdateFailure::Interrupted;
        QTest::newRow("broken in the middle")
            << Answer{okHead + "Content-Length: 5000\r\n"_ba, sound, Then::Reset} << UpdateFailure::Interrupted;
        QTest::newRow("gone at once") << Answer{{}, {}, Then::Reset, false} << UpdateFailure::Interrupted;
        QTest::newRow("compressed") << Answer{okHead + "Content-Encoding: gzip\r\n"_ba, qCompress(sound).sliced(4)}
                                    << UpdateFailure::NotAFeed;
        QTest::newRow("to plain HTTP") << UpdateServer::redirect(QUrl(u"http://updates.morvel.example/feed"_s))
                                       << UpdateFailure::InsecureRedirect;
        QTest::newRow("to plain HTTP of this machine")
            << UpdateServer::redirect(QUrl(u"http://127.0.0.1:1/feed"_s)) << UpdateFailure::InsecureRedirect;
        QTest::newRow("to a file") << UpdateServer::redirect(QUrl(u"file:///etc/passwd"_s))
                                   << UpdateFailure::InsecureRedirect;
        QTest::newRow("to nowhere") << UpdateServer::redirect(QUrl()) << UpdateFailure::ServerError;
        QTest::newRow("to a broken address")
            << Answer{"HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: https://[\r\n", {}}
            << UpdateFailure::InsecureRedirect;
        QTest::newRow("elsewhere without end")
            << Answer{"HTTP/1.1 307 Elsewhere\r\nLocation: /feed\r\n", QByteArray(1000, 'x'), Then::Flood}
            << UpdateFailure::TooManyRedirects;
        QTest::newRow("in a circle") << UpdateServer::redirect(QUrl(u"/feed"_s)) << UpdateFailure::TooManyRedirects;
    }
    void aBadFeedIsRefused()
    {
        QFETCH(const Answer, answer);
        QFETCH(const UpdateFailure, failure);
        m_server->setAnswer(u"/feed"_s, answer);
        QCOMPARE(failureOf(configurationFor(failure)), textOf(failure).toString());
        QCOMPARE(entriesBelow(m_home.path()), QStringList());
    }

    void aRedirectToHttpsIsFollowed()
    {
        UpdateServer other(m_identity);
        publish(other);
        m_server->setAnswer(u"/feed"_s, UpdateServer::redirect(other.address(u"/feed"_s)));
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
    }

    void aServerWithoutAValidCertificateIsRefused_data()
    {
        QTest::addColumn<CertificateAuthority::Kind>("kind");
        QTest::newRow("expired") << CertificateAuthority::Kind::Expired;
        QTest::newRow("another name") << CertificateAuthority::Kind::OfAnotherName;
        QTest::newRow("self-signed") << CertificateAuthority::Kind::SelfSigned;
    }
    void aServerWithoutAValidCertificateIsRefused()
    {
        QFETCH(const CertificateAuthority::Kind, kind);
        UpdateServer server(m_authority.identity(kind));
        publish(server);
        QCOMPARE(failureOf(configuration(server.address(u"/feed"_s))), textOf(UpdateFailure::Certificate).toString());
        QCOMPARE(server.requests().size(), 0);
    }

    void aServerThatIsNotThereIsTold()
    {
        const UpdateConfiguration asked = configuration();
        m_server.reset();
        QCOMPARE(failureOf(asked), textOf(UpdateFailure::Unreachable).toString());
    }

    void aBadPackageIsRefused_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<UpdateFailure>("failure");
        constexpr auto length = "HTTP/1.1 200 OK\r\nContent-Length: 200000\r\n";
        QByteArray altered = package;
        altered[100'000] = 'q';
        QTest::newRow("altered") << UpdateServer::ok(binary, altered) << UpdateFailure::WrongSignature;
        QTest::newRow("shorter") << UpdateServer::ok(binary, package.chopped(1)) << UpdateFailure::WrongLength;
        QTest::newRow("longer") << UpdateServer::ok(binary, package + 'p') << UpdateFailure::WrongLength;
        QTest::newRow("shorter, not announced")
            << Answer{"HTTP/1.1 200 OK\r\n", package.chopped(1)} << UpdateFailure::WrongLength;
        QTest::newRow("longer, not announced")
            << Answer{"HTTP/1.1 200 OK\r\n", package + 'p'} << UpdateFailure::WrongLength;
        QTest::newRow("endless") << Answer{"HTTP/1.1 200 OK\r\n", package, Then::Flood} << UpdateFailure::WrongLength;
        QTest::newRow("empty") << UpdateServer::ok(binary, "") << UpdateFailure::WrongLength;
        QTest::newRow("slow") << Answer{length, QByteArray(10, 'p'), Then::Drip} << UpdateFailure::TooSlow;
        QTest::newRow("stalled") << Answer{length, QByteArray(10, 'p'), Then::Stall} << UpdateFailure::TooSlow;
        QTest::newRow("gone in the middle") << Answer{length, package.first(100'000)} << UpdateFailure::Interrupted;
        QTest::newRow("broken in the middle")
            << Answer{length, package.first(100'000), Then::Reset} << UpdateFailure::Interrupted;
        QTest::newRow("absent") << Answer{"HTTP/1.1 404 Not Found\r\n", package} << UpdateFailure::ServerError;
        QTest::newRow("to plain HTTP") << UpdateServer::redirect(QUrl(u"http://127.0.0.1:1/pelmora.deb"_s))
                                       << UpdateFailure::InsecureRedirect;
        QTest::newRow("in a circle") << UpdateServer::redirect(QUrl(u"/pelmora.deb"_s))
                                     << UpdateFailure::TooManyRedirects;
    }
    void aBadPackageIsRefused()
    {
        QFETCH(const Answer, answer);
        QFETCH(const UpdateFailure, failure);
        m_server->setAnswer(u"/pelmora.deb"_s, answer);
        UpdateConfiguration changed = configurationFor(failure);
        changed.limits.feedTime = 10s;
        changed.limits.stall = std::max<std::chrono::milliseconds>(changed.limits.stall, 400ms);
        UpdateSession session(changed);
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Failed);
        QCOMPARE(textOf(session.failure()), textOf(failure));
        QCOMPARE(session.packagePath(), QString());
        QCOMPARE(entriesBelow(m_folder), QStringList());
    }

    void aSignatureOfAnotherFileOrMakerIsRefused_data()
    {
        QTest::addColumn<QByteArray>("signature");
        QTest::newRow("another file") << m_key.sign("another file");
        QTest::newRow("another maker") << SigningKey().sign(package);
        QTest::newRow("zeros") << QByteArray(64, '\0').toBase64();
    }
    void aSignatureOfAnotherFileOrMakerIsRefused()
    {
        QFETCH(const QByteArray, signature);
        m_server->setAnswer(u"/feed"_s, UpdateServer::ok(rss, feed(*m_server, signature)));
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Failed);
        QCOMPARE(session.failure(), UpdateFailure::WrongSignature);
        QCOMPARE(entriesBelow(m_folder), QStringList());
    }

    void aFullDiskLeavesNothing()
    {
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        State state = State::Idle;
        {
            const FileSizeLimit limit(100'000);
            state = downloaded(session);
        }
        QCOMPARE(state, State::Failed);
        QCOMPARE(session.failure(), UpdateFailure::DiskFull);
        QCOMPARE(entriesBelow(m_folder), QStringList());
    }

    void aFolderThatCannotBeWrittenToIsTold()
    {
        UpdateConfiguration changed = configuration();
        changed.folder = u"/proc/self/updates"_s;
        UpdateSession session(changed);
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Failed);
        QCOMPARE(session.failure(), UpdateFailure::CannotWrite);
    }

    void aDownloadCanBeCancelledAndBegunAgain()
    {
        m_server->setAnswer(u"/pelmora.deb"_s,
                            {"HTTP/1.1 200 OK\r\nContent-Length: 200000\r\n", package.first(1000), Then::Stall});
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        QSignalSpy progress(&session, &UpdateSession::progressed);
        session.download();
        QVERIFY(progress.wait());
        QCOMPARE(entriesBelow(m_folder).size(), 1);
        session.cancelDownload();
        QCOMPARE(session.state(), State::Available);
        QCOMPARE(entriesBelow(m_folder), QStringList());

        publish(*m_server);
        QCOMPARE(downloaded(session), State::Ready);
    }

    void aVerificationCanBeCancelledAndBegunAgain()
    {
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        const auto cancel = connect(&session, &UpdateSession::stateChanged, &session, [&session] {
            if (session.state() == State::Verifying)
                QMetaObject::invokeMethod(&session, &UpdateSession::cancelDownload, Qt::QueuedConnection);
        });
        QCOMPARE(downloaded(session), State::Available);
        QCOMPARE(entriesBelow(m_folder), QStringList());
        disconnect(cancel);
        QCOMPARE(downloaded(session), State::Ready);
    }

    void aSessionThatIsDroppedLeavesNothing()
    {
        m_server->setAnswer(u"/pelmora.deb"_s,
                            {"HTTP/1.1 200 OK\r\nContent-Length: 200000\r\n", package.first(1000), Then::Stall});
        {
            UpdateSession session(configuration());
            QCOMPARE(searched(session), State::Available);
            QSignalSpy progress(&session, &UpdateSession::progressed);
            session.download();
            QVERIFY(progress.wait());
        }
        QCOMPARE(entriesBelow(m_folder), QStringList());
        UpdateSession searching(configuration());
        searching.start();
    }

    void everybodySendsTheSame()
    {
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Ready);
        QCOMPARE(m_server->requests().size(), 2);
        const QStringList paths{u"/feed"_s, u"/pelmora.deb"_s};
        for (qsizetype index = 0; index < paths.size(); ++index) {
            const QUrl address = m_server->address(paths[index]);
            QList<QByteArray> lines = m_server->requests().at(index).trimmed().replace("\r", "").split('\n');
            std::ranges::sort(lines);
            const QList<QByteArray> expected{
                "Accept-Encoding: identity",
                "Accept-Language: *",
                "Cache-Control: no-cache",
                "Connection: Keep-Alive",
                "GET " + paths[index].toUtf8() + " HTTP/1.1",
                "Host: " + address.authority().toUtf8(),
                "Pragma: no-cache",
                "User-Agent: Pelmora",
            };
            QCOMPARE(lines, expected);
        }
    }
};

QTEST_MAIN(tst_UpdateSession)
#include "tst_updatesession.moc"
