#include "platform/files/FailedWrites.h"
#include "tests/common/RunnableTests.h"
#include "tests/platform/FileSizeLimit.h"
#include "tests/update/UpdateSessionTest.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Then = UpdateServer::Then;
using Answer = UpdateServer::Answer;

/// Downloads with a faulty package, server or disk.
class tst_UpdateDownload final : public UpdateSessionTest
{
    Q_OBJECT

private Q_SLOTS:
    void aBadPackageIsRefused_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<UpdateFailure>("failure");
        constexpr auto length = "HTTP/1.1 200 OK\r\nContent-Length: 200000\r\n";
        QByteArray altered = samplePackage;
        altered[100'000] = 'q';
        QTest::newRow("altered") << UpdateServer::ok(packageType, altered) << UpdateFailure::WrongSignature;
        QTest::newRow("shorter") << UpdateServer::ok(packageType, samplePackage.chopped(1))
                                 << UpdateFailure::WrongLength;
        QTest::newRow("longer") << UpdateServer::ok(packageType, samplePackage + 'p') << UpdateFailure::WrongLength;
        QTest::newRow("shorter, not announced")
            << Answer{"HTTP/1.1 200 OK\r\n", samplePackage.chopped(1)} << UpdateFailure::WrongLength;
        QTest::newRow("longer, not announced")
            << Answer{"HTTP/1.1 200 OK\r\n", samplePackage + 'p'} << UpdateFailure::WrongLength;
        QTest::newRow("endless") << Answer{"HTTP/1.1 200 OK\r\n", samplePackage, Then::Flood}
                                 << UpdateFailure::WrongLength;
        QTest::newRow("empty") << UpdateServer::ok(packageType, "") << UpdateFailure::WrongLength;
        QTest::newRow("slow") << Answer{length, QByteArray(10, 'p'), Then::Drip} << UpdateFailure::TooSlow;
        QTest::newRow("stalled") << Answer{length, QByteArray(10, 'p'), Then::Stall} << UpdateFailure::TooSlow;
        QTest::newRow("gone in the middle")
            << Answer{length, samplePackage.first(100'000)} << UpdateFailure::Interrupted;
        QTest::newRow("broken in the middle")
            << Answer{length, samplePackage.first(100'000), Then::Reset} << UpdateFailure::Interrupted;
        QTest::newRow("absent") << Answer{"HTTP/1.1 404 Not Found\r\n", samplePackage} << UpdateFailure::ServerError;
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
        QCOMPARE(namesIn(m_folder), QStringList());
    }

    void aSignatureOfAnotherFileOrMakerIsRefused_data()
    {
        QTest::addColumn<QByteArray>("signature");
        QTest::newRow("another file") << m_key.sign("another file");
        QTest::newRow("another maker") << SigningKey().sign(samplePackage);
        QTest::newRow("zeros") << QByteArray(64, '\0').toBase64();
    }
    void aSignatureOfAnotherFileOrMakerIsRefused()
    {
        QFETCH(const QByteArray, signature);
        m_server->setAnswer(u"/feed"_s, UpdateServer::ok(feedType, feed(*m_server, signature)));
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Failed);
        QCOMPARE(session.failure(), UpdateFailure::WrongSignature);
        QCOMPARE(namesIn(m_folder), QStringList());
    }

    void aPackageFromAServerWithoutAValidCertificateIsRefused()
    {
        UpdateServer other(m_authority.identity(CertificateAuthority::Kind::SelfSigned));
        publish(other);
        m_server->setAnswer(u"/feed"_s, UpdateServer::ok(feedType, feed(other, m_key.sign(samplePackage))));
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Failed);
        QCOMPARE(session.failure(), UpdateFailure::Certificate);
        QCOMPARE(other.requests().size(), 0);
        QCOMPARE(namesIn(m_folder), QStringList());
    }

    void aFullDiskLeavesNothing()
    {
        UpdateSession session(configuration());
        QCOMPARE(searched(session), State::Available);
        State state = State::Idle;
        {
            ignoreSignalsOfFailedWrites(); // as all our programs do
            const FileSizeLimit limit(100'000);
            state = downloaded(session);
        }
        QCOMPARE(state, State::Failed);
        QCOMPARE(session.failure(), UpdateFailure::DiskFull);
        QCOMPARE(namesIn(m_folder), QStringList());
    }

    void aFolderThatCannotBeWrittenToIsReported()
    {
        UpdateConfiguration changed = configuration();
        changed.folder = u"/proc/self/updates"_s;
        UpdateSession session(changed);
        QCOMPARE(searched(session), State::Available);
        QCOMPARE(downloaded(session), State::Failed);
        QCOMPARE(session.failure(), UpdateFailure::CannotWrite);
    }
};

template class RunnableTests<tst_UpdateDownload, QCoreApplication>;
#include "tst_updatedownload.moc"
