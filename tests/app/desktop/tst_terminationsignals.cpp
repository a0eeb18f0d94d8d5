#include "app/desktop/TerminationSignals.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QEventLoopLocker>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <csignal>

namespace {

using Handler = void (*)(int);

Handler handlerOf(int number)
{
    struct sigaction action{};
    sigaction(number, nullptr, &action);
    return action.sa_handler;
}

} // namespace

class tst_TerminationSignals : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void eachSignalRequestsTermination_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }
    void eachSignalRequestsTermination()
    {
        QFETCH(const int, number);
        // The environment of the test may ignore some signals.
        const Handler before = std::signal(number, SIG_DFL);
        {
            const TerminationSignals signals;
            QSignalSpy asked(&signals, &TerminationSignals::terminationRequested);
            raise(number);
            QCOMPARE(asked.size(), 0);
            QTRY_COMPARE(asked.size(), 1);
            raise(number);
            QTRY_COMPARE(asked.size(), 2);
        }
        QVERIFY(handlerOf(number) == SIG_DFL);
        std::signal(number, before);
    }

    void signalsThatTheParentIgnoredStayIgnored()
    {
        const Handler before = std::signal(SIGHUP, SIG_IGN);
        {
            const TerminationSignals signals;
            QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
        }
        QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
        std::signal(SIGHUP, before);
    }

    void theEndOfTheSessionRequestsTerminationWithoutClosingWindows()
    {
        const TerminationSignals signals;
        const QSignalSpy asked(&signals, &TerminationSignals::terminationRequested);
        QEvent quit(QEvent::Quit);
        QVERIFY(QCoreApplication::sendEvent(QCoreApplication::instance(), &quit));
        QCOMPARE(asked.size(), 1);
    }

    void theEndOfABackgroundJobDoesNotRequestTermination()
    {
        const TerminationSignals signals;
        const QSignalSpy asked(&signals, &TerminationSignals::terminationRequested);
        QTimer::singleShot(0, &signals, [] { const QEventLoopLocker job; });
        QTimer::singleShot(50, &signals, [] { QCoreApplication::exit(3); });
        QCOMPARE(QCoreApplication::exec(), 3);
        QCOMPARE(asked.size(), 0);
    }

    void theHandlerOfASignalCanEndTheEventLoop()
    {
        const TerminationSignals signals;
        connect(&signals, &TerminationSignals::terminationRequested, &signals, [] { QCoreApplication::exit(0); });
        QTimer::singleShot(0, &signals, [] { raise(SIGTERM); });
        QCOMPARE(QCoreApplication::exec(), 0);
    }
};

template class RunnableTests<tst_TerminationSignals, QCoreApplication>;
#include "tst_terminationsignals.moc"
