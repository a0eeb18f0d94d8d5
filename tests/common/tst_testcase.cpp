#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_TestCase : public TestCase
{
    Q_OBJECT

private:
    // The number of the program's failed tests.
    static int failures(const QStringList& tests)
    {
        QProcess program;
        program.start(QStringLiteral(PELMORA_UNANNOUNCED_MESSAGES), tests);
        return program.waitForFinished() && program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
    }

private Q_SLOTS:
    void aTestFailsOnAnUnannouncedMessage_data()
    {
        QTest::addColumn<int>("failed");
        QTest::newRow("aDebugMessage") << 0;
        QTest::newRow("aWarning") << 1;
        QTest::newRow("aCriticalMessage") << 1;
        QTest::newRow("aMessageOfThePlatformWithoutADisplay") << 0;
        QTest::newRow("announcedMessages") << 0;
        QTest::newRow("announcedMessagesOfAnyNumber") << 0;
        QTest::newRow("aWarningAfterItsAnnouncementHasEnded") << 1;
        QTest::newRow("aWarningAfterAnAnnouncedOne") << 1;
    }

    void aTestFailsOnAnUnannouncedMessage()
    {
        QTEST(failures({QString::fromLatin1(QTest::currentDataTag())}), "failed");
    }

    void messagesAreCheckedInEveryTestOfAClass() { QCOMPARE(failures({}), 4); }
};

template class RunnableTests<tst_TestCase, QCoreApplication>;
#include "tst_testcase.moc"
