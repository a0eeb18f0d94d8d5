#include "RecordedMove.h"
#include "support/move/MoveTrash.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int before10_8 = 1186;
constexpr int from10_8 = 1187;
const QString path = u"/home/anne/L'été \"2\"/Pelmora.app"_s;
const QString trash = u"trash | "_s + path;
const QString recycle = u"recycle | Pelmora.app | /home/anne/L'été \"2\""_s;
const QString script = u"script | set theFile to POSIX file \""_s + path +
                       u"\" | tell application \"Finder\" | move theFile to trash | end tell"_s;

} // namespace

class tst_MoveTrash : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstWayThatSucceedsIsTheLast_data();
    void theFirstWayThatSucceedsIsTheLast();
    void aFailureOfAllIsLogged();
};

void tst_MoveTrash::theFirstWayThatSucceedsIsTheLast_data()
{
    QTest::addColumn<int>("release");
    QTest::addColumn<bool>("trashes");
    QTest::addColumn<bool>("recycles");
    QTest::addColumn<QStringList>("record");
    QTest::newRow("the file manager's") << from10_8 << true << true << QStringList{trash};
    QTest::newRow("the workspace's") << from10_8 << false << true << QStringList{trash, recycle};
    QTest::newRow("the script's") << from10_8 << false << false << QStringList{trash, recycle, script};
    QTest::newRow("before, the workspace's") << before10_8 << true << true << QStringList{recycle};
    QTest::newRow("before, the script's") << before10_8 << true << false << QStringList{recycle, script};
}

void tst_MoveTrash::theFirstWayThatSucceedsIsTheLast()
{
    QFETCH(const int, release);
    QFETCH(const bool, trashes);
    QFETCH(const bool, recycles);
    QFETCH(const QStringList, record);
    RecordedMove platform;
    platform.trashes = trashes;
    platform.recycles = recycles;
    QVERIFY(moveToTrash(path, release, platform));
    QCOMPARE(platform.record, record);
}

void tst_MoveTrash::aFailureOfAllIsLogged()
{
    RecordedMove platform;
    platform.trashes = false;
    platform.recycles = false;
    platform.scriptFailure = u"erreur -43, '%@'"_s;
    QVERIFY(!moveToTrash(path, from10_8, platform));
    QCOMPARE(platform.record,
             (QStringList{trash, recycle, script, u"log error | Trash AppleScript error: erreur -43, '%@'"_s,
                          u"log error | ERROR -- Could not trash '"_s + path + u'\''}));
}

QTEST_APPLESS_MAIN(tst_MoveTrash)
#include "tst_movetrash.moc"
