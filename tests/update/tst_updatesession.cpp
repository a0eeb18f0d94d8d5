#include "tests/common/RunnableTests.h"
#include "tests/update/UpdateSessionTest.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <functional>

using namespace Qt::StringLiterals;
using Then = UpdateServer::Then;

/// A session's states, its end, and its requests to the server.
class tst_UpdateSession final : public UpdateSessionTest
{
    Q_OBJECT

private Q_SLOTS:
    void anUpdateIsFoundDownloadedAndVerified()
    {
        UpdateSession session(configuration());
        QList<State> states;
        connect(&session, &UpdateSession::stateChanged, this, [&] { states.append(session.state()); });
        QSignalSpy progress(&session, &UpdateSession::progressed);
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(session.item().version, u"2.0"_s);
        QCOMPARE(namesIn(m_home.path()), QStringList());

        QCOMPARE(downloaded(session), State::Ready);
        const QList<State> expected{State::Checking, State::Available, State::Downloading, State::Verifying,
                                    State::Ready};
        QCOMPARE(states, expected);
        QCOMPARE(progress.last().first().toLongLong(), samplePackage.size());
        QCOMPARE(contentOf(session.packagePath()), samplePackage);
        QCOMPARE(QFileInfo(session.packagePath()).fileName(), u"pelmora.deb"_s);
    }

    void aReadyPackageIsKeptAfterItsSession()
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

    void plainHttpIsAcceptedFromThisMachine()
    {
        UpdateServer plain;
        publish(plain);
        UpdateSession session(configuration(plain.address(u"/feed"_s)));
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Ready);
    }

    void anIncompleteConfigurationSendsNoRequest_data()
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
    void anIncompleteConfigurationSendsNoRequest()
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

    void aDownloadCanBeCancelledAndStartedAgain()
    {
        m_server->setAnswer(u"/pelmora.deb"_s,
                            {"HTTP/1.1 200 OK\r\nContent-Length: 200000\r\n", samplePackage.first(1000), Then::Stall});
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        QSignalSpy progress(&session, &UpdateSession::progressed);
        session.download();
        QVERIFY(progress.wait());
        QCOMPARE(namesIn(m_folder).size(), 1);
        session.cancelDownload();
        QCOMPARE(session.state(), State::Available);
        QCOMPARE(namesIn(m_folder), QStringList());

        publish(*m_server);
        QCOMPARE(downloaded(session), State::Ready);
    }

    void aVerificationCanBeCancelledAndStartedAgain()
    {
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        const auto cancel = connect(&session, &UpdateSession::stateChanged, &session, [&session] {
            if (session.state() == State::Verifying)
                QMetaObject::invokeMethod(&session, &UpdateSession::cancelDownload, Qt::QueuedConnection);
        });
        QCOMPARE(downloaded(session), State::Available);
        QCOMPARE(namesIn(m_folder), QStringList());
        disconnect(cancel);
        QCOMPARE(downloaded(session), State::Ready);
    }

    void aDeletedSessionLeavesNoFiles()
    {
        m_server->setAnswer(u"/pelmora.deb"_s,
                            {"HTTP/1.1 200 OK\r\nContent-Length: 200000\r\n", samplePackage.first(1000), Then::Stall});
        {
            UpdateSession session(configuration());
            QCOMPARE(searched(session), State::Available);
            QSignalSpy progress(&session, &UpdateSession::progressed);
            session.download();
            QVERIFY(progress.wait());
        }
        QCOMPARE(namesIn(m_folder), QStringList());
    }

    void aSessionCanBeDeletedDuringItsSearch()
    {
        m_server->setAnswer(u"/feed"_s, {{}, {}, Then::Stall, false});
        {
            UpdateSession session(configuration());
            session.start();
            QTRY_COMPARE(m_server->requests().size(), 1);
            QCOMPARE(session.state(), State::Checking);
        }
        publish(*m_server);
        UpdateSession next(configuration());
        QCOMPARE(searched(next), State::Available);
    }

    void aSessionDeletedDuringTheVerificationLeavesNoFiles()
    {
        auto session = std::make_unique<UpdateSession>(configuration());
        QCOMPARE(searched(*session), State::Available);
        QSignalSpy changes(session.get(), &UpdateSession::stateChanged);
        session->download();
        while (session->state() == State::Downloading && changes.wait()) {
        }
        QCOMPARE(session->state(), State::Verifying);
        session.reset();
        // The result of the verification arrives after the session's end.
        QCoreApplication::processEvents();
        QCOMPARE(namesIn(m_folder), QStringList());
    }

    void requestsContainNothingThatIdentifiesTheUser()
    {
        // Cookies and entity tags of a server are not sent back.
        UpdateServer::Answer marked = UpdateServer::ok(feedType, feed(*m_server, m_key.sign(samplePackage)));
        marked.head += "Set-Cookie: who=me; Path=/\r\nETag: \"me\"\r\n";
        m_server->setAnswer(u"/feed"_s, marked);
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

template class RunnableTests<tst_UpdateSession, QCoreApplication>;
#include "tst_updatesession.moc"
