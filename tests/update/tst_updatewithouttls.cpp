#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "update/UpdateSession.h"

#include <QCoreApplication>
#include <QSslSocket>
#include <QTest>

using namespace Qt::StringLiterals;

/// Qt chooses its TLS library once per process, so a system without one needs a separate process.
class tst_UpdateWithoutTls : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void withoutTlsNoRequestIsSent()
    {
        QVERIFY(QSslSocket::setActiveBackend(u"cert-only"_s));
        UpdateConfiguration configuration;
        configuration.feed = QUrl(u"https://127.0.0.1:1/feed"_s);
        configuration.publicKey = QByteArray(32, 'k').toBase64();
        configuration.version = u"1.0"_s;
        UpdateSession session(configuration);
        session.start();
        QCOMPARE(session.state(), UpdateSession::State::Failed);
        QCOMPARE(session.failure(), UpdateFailure::NoEncryption);
    }
};

template class RunnableTests<tst_UpdateWithoutTls, QCoreApplication>;
#include "tst_updatewithouttls.moc"
