#include "card/client/LVitAccess.h"
#include "tests/card/client/ClientOutcome.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/SilentServer.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;

/// The client with the shipped card service, while the system's readers hang.
class tst_CardServiceDeadline : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aReaderThatHangsIsAnsweredAndTheServiceReplaced()
    {
        const auto client = std::make_shared<LVitAccess>(ServiceCommand{QStringLiteral(PELMORA_SERVICE_PROGRAM), {}});
        client->setAccessMode(2);
        const SilentServer readers("PCSCLITE_CSOCK_NAME");
        QVERIFY(readers.isListening());

        // The reply is sent before the service ends. So the error is that there is no reader, not that the service has
        // ended.
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(summary(awaitBind(client)), u"Pelmora -20"_s);
        QVERIFY2(timer.elapsed() >= 10'000 && timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
        // Requests during the service's end are answered by its end or by the next service.
        qputenv("PCSCLITE_CSOCK_NAME", qgetenv("PCSCLITE_CSOCK_NAME") + "-absent");
        const QString late = summary(awaitReaders(client));
        QVERIFY2(late == u"Pelmora -10" || late == u"success", qPrintable(late));

        // The next bind starts another service, which does not wait for the hanging call.
        timer.restart();
        QCOMPARE(summary(awaitBind(client)), u"Pelmora -20"_s);
        QVERIFY2(timer.elapsed() < 5'000, qPrintable(QString::number(timer.elapsed())));
    }
};

template class RunnableTests<tst_CardServiceDeadline, QCoreApplication>;

#include "tst_cardservicedeadline.moc"
