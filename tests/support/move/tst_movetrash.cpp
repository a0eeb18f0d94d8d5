#include "support/move/MoveTrash.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/MoveTexts.h"
#include "tests/support/move/RecordedMove.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace MoveTexts;

class tst_MoveTrash : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void afterTheFirstSuccessNoOtherWayIsTried_data()
    {
        QTest::addColumn<bool>("trashes");
        QTest::addColumn<QStringList>("record");
        QTest::newRow("the user's trash") << true << QStringList{trash};
        QTest::newRow("the desktop's own way") << false << QStringList{trash, recycle};
    }

    void afterTheFirstSuccessNoOtherWayIsTried()
    {
        QFETCH(const bool, trashes);
        QFETCH(const QStringList, record);
        RecordedMove platform;
        platform.trashes = trashes;
        QVERIFY(moveToTrash(path, platform));
        QCOMPARE(platform.record, record);
    }

    void theFailureOfAllWaysIsLogged()
    {
        RecordedMove platform;
        platform.trashes = false;
        platform.recycles = false;
        QVERIFY(!moveToTrash(path, platform));
        QCOMPARE(platform.record,
                 (QStringList{trash, recycle, u"log error | ERROR -- Could not trash '"_s + path + u'\''}));
    }
};

template class RunnableTests<tst_MoveTrash, void>;
#include "tst_movetrash.moc"
