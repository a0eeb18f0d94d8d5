#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/MacintoshMove.h"
#include "tests/support/move/MoveTexts.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace MoveTexts;

namespace {

const QString script = u"script | set theFile to POSIX file \""_s + path +
                       u"\" | tell application \"Finder\" | move theFile to trash | end tell"_s;

// Records its calls in order, and gives prepared answers.
class RecordedTrash final : public MacintoshTrash
{
public:
    QStringList record;
    bool trashes = false;
    bool recycles = false;
    std::optional<QString> scriptFailure;

    bool trashItem(const QString& item) override
    {
        record.append(u"trash | "_s + item);
        return trashes;
    }
    bool recycleItem(const QString& name, const QString& parentFolder) override
    {
        record.append(u"recycle | "_s + name + u" | "_s + parentFolder);
        return recycles;
    }
    std::expected<void, QString> runScript(const QStringList& lines) override
    {
        record.append(u"script | "_s + lines.join(" | "_L1));
        if (scriptFailure)
            return std::unexpected(*scriptFailure);
        return {};
    }
    void logError(const QString& line) override { record.append(u"log | "_s + line); }
};

} // namespace

class tst_MacintoshMove : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theCommandsAreAsExpected()
    {
        const MacintoshMoveCommands commands(MacintoshRelease::firstOf10_8);
        QCOMPARE(textOf(MacintoshMoveCommands::listMountedImages()), u"/usr/bin/hdiutil | info | -plist"_s);
        QCOMPARE(textOf(commands.openRunningCopy(bundle)), u"/usr/bin/open | "_s + bundle);
        QCOMPARE(textOf(commands.ejectImage(u"/dev/disk2s1"_s)),
                 u"/bin/sh | -c | (/bin/sleep 5 && /usr/bin/hdiutil detach '/dev/disk2s1') &"_s);
        QCOMPARE(textOf(commands.privilegedDelete(bundle)), u"/bin/rm | -rf | "_s + bundle);
        QCOMPARE(textOf(commands.privilegedCopy(u"/a b"_s, bundle)), u"/bin/cp | -pR | /a b | "_s + bundle);
    }

    void theQuarantineIsRemovedByTheCommandOfTheRelease_data()
    {
        QTest::addColumn<int>("release");
        QTest::addColumn<QString>("removal");
        QTest::newRow("10.4") << 824 << u"/usr/bin/xattr -d com.apple.quarantine "_s;
        QTest::newRow("10.5") << 949 << u"/usr/bin/xattr -d com.apple.quarantine "_s;
        QTest::newRow("just later") << 950 << u"/usr/bin/xattr -d -r com.apple.quarantine "_s;
        QTest::newRow("10.8") << 1187 << u"/usr/bin/xattr -d -r com.apple.quarantine "_s;
    }

    void theQuarantineIsRemovedByTheCommandOfTheRelease()
    {
        QFETCH(const int, release);
        QFETCH(const QString, removal);
        QCOMPARE(textOf(MacintoshMoveCommands(release).relaunch(81, bundle)),
                 u"/bin/sh | -c | (while /bin/kill -0 81 >&/dev/null; do /bin/sleep 0.1; done; "_s + removal +
                     quotedBundle + u"; /usr/bin/open "_s + quotedBundle + u") &"_s);
    }

    void beforeThatReleaseACommandTellsWhetherTheCopyRuns()
    {
        const std::optional<MoveCommand> test = MacintoshMoveCommands(949).testRunning(bundle);
        QVERIFY(test);
        QCOMPARE(textOf(*test), u"/bin/sh | -c | /bin/ps ax -o comm | /usr/bin/grep "_s + quotedBundle +
                                    u"/ | /usr/bin/grep -v grep >/dev/null"_s);
        QVERIFY(!MacintoshMoveCommands(950).testRunning(bundle));
    }

    void afterTheFirstSuccessNoOtherWayToTheTrashIsTried_data()
    {
        QTest::addColumn<int>("release");
        QTest::addColumn<bool>("trashes");
        QTest::addColumn<bool>("recycles");
        QTest::addColumn<QStringList>("record");
        QTest::newRow("the file manager's") << 1187 << true << true << QStringList{trash};
        QTest::newRow("the workspace's") << 1187 << false << true << QStringList{trash, recycle};
        QTest::newRow("the script's") << 1187 << false << false << QStringList{trash, recycle, script};
        QTest::newRow("before, the workspace's") << 1186 << true << true << QStringList{recycle};
        QTest::newRow("before, the script's") << 1186 << true << false << QStringList{recycle, script};
    }

    void afterTheFirstSuccessNoOtherWayToTheTrashIsTried()
    {
        QFETCH(const int, release);
        QFETCH(const bool, trashes);
        QFETCH(const bool, recycles);
        QFETCH(const QStringList, record);
        RecordedTrash platform;
        platform.trashes = trashes;
        platform.recycles = recycles;
        QVERIFY(moveToMacintoshTrash(path, release, platform));
        QCOMPARE(platform.record, record);
    }

    void aFailureOfAllWaysIsLogged()
    {
        RecordedTrash platform;
        platform.scriptFailure = u"erreur -43, '%@'"_s;
        QVERIFY(!moveToMacintoshTrash(path, 1187, platform));
        QCOMPARE(platform.record,
                 (QStringList{trash, recycle, script, u"log | Trash AppleScript error: erreur -43, '%@'"_s,
                              u"log | ERROR -- Could not trash '"_s + path + u'\''}));
    }
};

template class RunnableTests<tst_MacintoshMove, void>;
#include "tst_macintoshmove.moc"
