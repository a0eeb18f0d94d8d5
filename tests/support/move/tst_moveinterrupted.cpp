#include "platform/UserDefaults.h"
#include "support/move/LinuxMoveOperations.h"
#include "support/move/MoveToApplications.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/FolderTree.h"
#include "tests/support/move/KilledAtCall.h"
#include "tests/support/move/MoveScene.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// The real platform, without a user: the answer to the question is always yes, and commands for an administrator run
// with the rights of the test. In place of the n-th operation, it kills its own process.
class MortalMove final : public RecordedMove
{
public:
    MortalMove(UserDefaults& defaults, int fatalOperation)
        : m_platform(defaults)
        , m_fatalOperation(fatalOperation)
    {
    }

    ItemFacts factsOf(const QString& path) override;
    QStringList entriesOf(const QString& folder) override;
    std::expected<void, QString> copyItem(const QString& source, const QString& destination) override;
    std::expected<void, QString> removeItem(const QString& path) override;
    bool trashItem(const QString& path) override;
    std::optional<int> runAuthorized(const MoveCommand& command) override;

protected:
    void note(const QString& operation, const QStringList& details) override;

private:
    LinuxMoveOperations m_platform;
    int m_fatalOperation;
    int m_operations = 0;
};

void MortalMove::note(const QString& operation, const QStringList& details)
{
    if (++m_operations == m_fatalOperation)
        static_cast<void>(raise(SIGKILL));
    RecordedMove::note(operation, details);
}

MoveOperations::ItemFacts MortalMove::factsOf(const QString& path)
{
    static_cast<void>(RecordedMove::factsOf(path));
    ItemFacts real = m_platform.factsOf(path);
    // The test may run as root, who can write everywhere. So the test sets which folders are locked.
    if (facts.contains(path))
        real.isWritable = facts.value(path).isWritable;
    return real;
}

QStringList MortalMove::entriesOf(const QString& folder)
{
    static_cast<void>(RecordedMove::entriesOf(folder));
    return m_platform.entriesOf(folder);
}

std::expected<void, QString> MortalMove::copyItem(const QString& source, const QString& destination)
{
    static_cast<void>(RecordedMove::copyItem(source, destination));
    return m_platform.copyItem(source, destination);
}

std::expected<void, QString> MortalMove::removeItem(const QString& path)
{
    static_cast<void>(RecordedMove::removeItem(path));
    return m_platform.removeItem(path);
}

bool MortalMove::trashItem(const QString& path)
{
    static_cast<void>(RecordedMove::trashItem(path));
    return m_platform.trashItem(path);
}

std::optional<int> MortalMove::runAuthorized(const MoveCommand& command)
{
    static_cast<void>(RecordedMove::runAuthorized(command));
    return m_platform.run(command);
}

enum class End
{
    Killed,
    Moved,
    Otherwise
};

// Moves in a child process, which is killed at its n-th operation.
End moveUntil(int fatalOperation, const MoveSurroundings& surroundings, bool isLocked)
{
    const pid_t child = fork();
    if (child == 0) {
        UserDefaults defaults(surroundings.userApplicationsFolder + "/../settings.conf"_L1);
        MortalMove platform(defaults, fatalOperation);
        platform.facts.insert(surroundings.userApplicationsFolder, {true, true, !isLocked});
        const bool isMoved =
            moveToApplications(surroundings, LinuxMoveCommands(), StringTable(), platform) == MoveOutcome::Ends;
        _exit(isMoved ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status))
        return End::Killed;
    return WEXITSTATUS(status) == 0 ? End::Moved : End::Otherwise;
}

} // namespace

class tst_MoveInterrupted : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aCompleteCopyRemainsWhereverTheMoveIsKilled_data()
    {
        QTest::addColumn<bool>("isLocked");
        QTest::addColumn<bool>("hasOldCopy");
        QTest::addColumn<int>("leastOperations");
        QTest::newRow("free") << false << false << 13;
        QTest::newRow("over an old copy") << false << true << 15;
        QTest::newRow("with an administrator") << true << false << 15;
        QTest::newRow("with an administrator, over an old copy") << true << true << 15;
    }

    void aCompleteCopyRemainsWhereverTheMoveIsKilled()
    {
        QFETCH(const bool, isLocked);
        QFETCH(const bool, hasOldCopy);
        QFETCH(const int, leastOperations);
        const QTemporaryDir home;
        qputenv("XDG_DATA_HOME", QFile::encodeName(home.path() + "/data"_L1));
        MoveSurroundings surroundings = MoveScene::surroundings();
        surroundings.bundlePath = home.path() + u"/Télé chargements/Pelmora.app"_s;
        surroundings.userApplicationsFolder = home.path() + "/Applications"_L1;
        const QString destination = home.path() + "/Applications/Pelmora.app"_L1;
        QVERIFY(makeFolderTree(surroundings.bundlePath));
        const QStringList whole = folderTreeOf(surroundings.bundlePath);
        QVERIFY(makeFolderTree(home.path() + "/Applications/Autre.app"_L1));

        int operation = 0;
        End end = End::Killed;
        while (end == End::Killed) {
            // Other files of the interrupted move stay. The user downloads the bundle again, and the destination is
            // restored.
            if (!QFile::exists(surroundings.bundlePath))
                QVERIFY(makeFolderTree(surroundings.bundlePath));
            if (QFile::exists(destination) != hasOldCopy)
                QVERIFY(hasOldCopy ? makeFolderTree(destination) : QDir(destination).removeRecursively());
            end = moveUntil(++operation, surroundings, isLocked);
            const bool isSourceWhole = folderTreeOf(surroundings.bundlePath) == whole;
            const bool isDestinationWhole = folderTreeOf(destination) == whole;
            QVERIFY2(isSourceWhole || isDestinationWhole, qPrintable(QString::number(operation)));
            // Neither path has an incomplete copy.
            QVERIFY(isSourceWhole || !QFile::exists(surroundings.bundlePath));
            QVERIFY(isDestinationWhole || !QFile::exists(destination));
        }
        QCOMPARE(end, End::Moved);
        QVERIFY2(operation > leastOperations, qPrintable(QString::number(operation)));
        QCOMPARE(folderTreeOf(destination), whole);
        QCOMPARE(QFile::exists(home.path() + "/data/Trash/files/Pelmora.app"_L1), hasOldCopy && !isLocked);
        QVERIFY(!QFile::exists(surroundings.bundlePath));
    }

    void aKilledDeletionOfTheAdministratorLeavesAllOrNothing_data()
    {
        QTest::addColumn<QString>("call");
        for (const char* call : {"renameat2", "unlinkat"})
            QTest::newRow(call) << QString::fromLatin1(call);
    }

    void aKilledDeletionOfTheAdministratorLeavesAllOrNothing()
    {
        QFETCH(const QString, call);
        const QTemporaryDir folder;
        const QString path = folder.path() + "/Pelmora.app"_L1;
        QVERIFY(makeFolderTree(path));
        const QStringList whole = folderTreeOf(path);
        const MoveCommand deletion = LinuxMoveCommands().privilegedDelete(path);
        int count = 0;
        bool isKilled = true;
        while (isKilled) {
            isKilled =
                isKilledAt(call, ++count, QStringList(deletion.program) + deletion.arguments) || QFile::exists(path);
            QVERIFY(!QFile::exists(path) || folderTreeOf(path) == whole);
            if (isKilled && !QFile::exists(path))
                QVERIFY(makeFolderTree(path));
            QVERIFY(count < 200);
        }
        QVERIFY(count > 1);
        QCOMPARE(namesIn(folder.path()), QStringList());
    }

    void aKilledCopyOfTheAdministratorIsCompleteOrAbsent_data()
    {
        QTest::addColumn<QString>("call");
        for (const char* call : {"/^(openat|mkdir|mkdirat)$", "/^(write|copy_file_range|ioctl)$", "/chmod", "syncfs",
                                 "renameat2", "unlinkat"})
            QTest::newRow(call) << QString::fromLatin1(call);
    }

    void aKilledCopyOfTheAdministratorIsCompleteOrAbsent()
    {
        QFETCH(const QString, call);
        const QTemporaryDir folder;
        const QString source = folder.path() + u"/L'été/Pelmora.app"_s;
        const QString path = folder.path() + "/Applications/Pelmora.app"_L1;
        QVERIFY(makeFolderTree(source));
        const QStringList whole = folderTreeOf(source);
        // Files of an interrupted copy.
        QVERIFY(makeFolderTree(folder.path() + "/Applications/.pelmora-administrator-abcdef/new"_L1));
        const MoveCommand copy = LinuxMoveCommands().privilegedCopy(source, path);
        int count = 1;
        // When the last deletion is killed, the command may succeed and leave files beside the complete copy.
        while (isKilledAt(call, count, QStringList(copy.program) + copy.arguments) ||
               namesIn(folder.path() + "/Applications"_L1).size() > 1) {
            ++count;
            QCOMPARE(folderTreeOf(source), whole);
            QVERIFY(!QFile::exists(path) || folderTreeOf(path) == whole);
            QVERIFY(!QFile::exists(path) || QDir(path).removeRecursively());
            QVERIFY(count < 200);
        }
        QVERIFY(count > 1);
        QCOMPARE(folderTreeOf(path), whole);
        QCOMPARE(namesIn(folder.path() + "/Applications"_L1), QStringList{u"Pelmora.app"_s});
    }
};

template class RunnableTests<tst_MoveInterrupted, QCoreApplication>;
#include "tst_moveinterrupted.moc"
