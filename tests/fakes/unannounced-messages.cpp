// unannounced-messages [TEST]: a test program whose tests write messages, announced and unannounced ones.
#include "tests/common/TestCase.h"

#include <QTest>

class UnannouncedMessages : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    // Messages are checked also when a class has these functions.
    void initTestCase() {}
    void init() {}

    void aDebugMessage() { qDebug("debug"); }
    void aWarning() { qWarning("warning"); }
    void aCriticalMessage() { qCritical("critical"); }
    void aMessageOfThePlatformWithoutADisplay() { qWarning("This plugin does not support raise()"); }
    void announcedMessages()
    {
        QTest::ignoreMessage(QtWarningMsg, "warning");
        QTest::ignoreMessage(QtWarningMsg, "critical");
        qWarning("warning");
        qCritical("critical");
    }
    void announcedMessagesOfAnyNumber()
    {
        const AnnouncedMessages announced(QStringLiteral("warn"));
        qWarning("warning");
        qCritical("warning, critical");
        QCOMPARE(announced.count(), 2);
    }
    void aWarningAfterItsAnnouncementHasEnded()
    {
        {
            const AnnouncedMessages announced(QStringLiteral("warn"));
        }
        qWarning("warning");
    }
    void aWarningAfterAnAnnouncedOne()
    {
        QTest::ignoreMessage(QtWarningMsg, "warning");
        qWarning("warning");
        qWarning("warning");
    }
};

QTEST_GUILESS_MAIN(UnannouncedMessages)
#include "unannounced-messages.moc"
