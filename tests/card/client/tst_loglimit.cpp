#include "card/client/LogLimit.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class tst_LogLimit : public TestCase
{
    Q_OBJECT

private:
    LogCapture m_log;

private Q_SLOTS:
    void init() { m_log.clear(); }

    void theFirstLinesOfAPeriodAreAdmittedAndTheOthersCounted()
    {
        LogLimit limit(MXLog::Warning, 3, 1h);
        for (int line = 0; line < 3; ++line)
            QVERIFY(limit.admits());
        for (int line = 0; line < 1000; ++line)
            QVERIFY(!limit.admits());
        QCOMPARE(m_log.lines(), QStringList());
        limit.tellLeftOut();
        limit.tellLeftOut();
        QCOMPARE(m_log.lines(MXLog::Warning), QStringList{u"Card service: 1000 more lines left out"_s});
        QCOMPARE(m_log.lines().size(), 1);
    }

    void theNumberLeftOutIsReportedBeforeTheNextPeriodsFirstLine()
    {
        LogLimit limit(MXLog::Debug, 1, 50ms);
        QVERIFY(limit.admits());
        int leftOut = 0;
        const auto isAdmitted = [&] {
            const bool admitted = limit.admits();
            leftOut += admitted ? 0 : 1;
            return admitted;
        };
        QVERIFY(QTest::qWaitFor(isAdmitted));
        const QStringList told =
            leftOut > 0 ? QStringList{u"Card service: %1 more lines left out"_s.arg(leftOut)} : QStringList();
        QCOMPARE(m_log.lines(MXLog::Debug), told);
        // The next period admits lines again, and the number is reported once.
        limit.tellLeftOut();
        QCOMPARE(m_log.lines(), told);
    }

    void withinTheLimitNothingIsLeftOut()
    {
        LogLimit limit(MXLog::Warning, 2, 1h);
        QVERIFY(limit.admits());
        QVERIFY(limit.admits());
        limit.tellLeftOut();
        QCOMPARE(m_log.lines(), QStringList());
    }
};

template class RunnableTests<tst_LogLimit, QCoreApplication>;
#include "tst_loglimit.moc"
