#include "RecordedMove.h"
#include "support/move/MoveTrash.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString path = u"/home/anne/L'été \"2\"/Pelmora.app"_s;
const QString trash = u"trash | "_s + path;
const QString recycle = u"recycle | Pelmora.app | /home/anne/L'été \"2\""_s;

} // namespace

class tst_MoveTrash : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstWayThatSucceedsIsTheLast_data()
    {
        QTest::addColumn<bool>("trashes");
        QTest::addColumn<QStringList>("record");
        QTest::newRow("the user's trash") << true << QStringList{trash};
        QTest::newRow("the desktop's own way") << false << QStringList{trash, recycle};
    }

    void theFirstWayThatSucceedsIsTheLast()
    {
        QFETCH(const bool, trashes);
        QFETCH(const QStringList, record);
        RecordedMove platform;
        platform.trashes = trashes;
        QVERIFY(moveToTrash(path, platform));
        QCOMPARE(platform.record, record);
    }

    void aFailureOfAllIsLogged()
    {
        RecordedMove platform;
        platform.trashes = false;
        platform.recycles = false;
        QVERIFY(!moveToTrash(path, platform));
        QCOMPARE(platform.record,
                 (QStringList{trash, recycle, u"log error | ERROR -- Could not trash '"_s + path + u'\''}));
    }
};

QTEST_APPLESS_MAIN(tst_MoveTrash)
#include "tst_movetrash.moc"
