#include "support/move/FolderCopy.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/FolderTree.h"
#include "tests/support/move/KilledAtCall.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString worker = QStringLiteral(PELMORA_FOLDER_WORKER);

} // namespace

class tst_FolderCopyInterrupted : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aKilledCopyIsCompleteOrAbsent_data()
    {
        QTest::addColumn<QString>("call");
        for (const char* call : {"mkdir", "openat", "sendfile", "fchmodat", "utimensat", "symlink", "fsync", "rename"})
            QTest::newRow(call) << QString::fromLatin1(call);
    }

    void aKilledCopyIsCompleteOrAbsent()
    {
        QFETCH(const QString, call);
        const QTemporaryDir folder;
        const QString source = folder.path() + u"/L'été/Pelmora.app"_s;
        const QString target = folder.path() + u"/Applications/Pelmora.app"_s;
        QVERIFY(makeFolderTree(source));
        QVERIFY(QDir().mkpath(folder.path() + u"/Applications"_s));
        const QStringList whole = folderTreeOf(source);
        int count = 0;
        while (isKilledAt(call, count + 1, {worker, u"copy"_s, source, target})) {
            ++count;
            QCOMPARE(folderTreeOf(source), whole);
            if (QFile::exists(target)) {
                QCOMPARE(folderTreeOf(target), whole);
                QVERIFY(removeFolder(target));
            }
            QVERIFY(count < 200);
        }
        QVERIFY(count > 0);
        // The last run was not killed, and has removed the files of the killed ones.
        QCOMPARE(folderTreeOf(target), whole);
        QCOMPARE(namesIn(folder.path() + u"/Applications"_s), QStringList{u"Pelmora.app"_s});
    }

    void aCopyInProgressIsLocked()
    {
        const QTemporaryDir folder;
        QVERIFY(makeFolderTree(folder.path() + "/Pelmora.app"_L1));
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s);
        process.setProcessEnvironment(environment);
        process.start(u"strace"_s, {u"-o"_s, folder.path() + "/calls"_L1, u"-e"_s, u"trace=flock,sendfile"_s, worker,
                                    u"copy"_s, folder.path() + "/Pelmora.app"_L1, folder.path() + "/copie"_L1});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
        QFile calls(folder.path() + "/calls"_L1);
        QVERIFY(calls.open(QIODevice::ReadOnly));
        const QByteArray first = calls.readLine();
        QVERIFY2(first.contains("LOCK_EX|LOCK_NB)") && first.endsWith(" = 0\n"), first.constData());
        QVERIFY(calls.readLine().startsWith("sendfile("));
    }

    void aKilledRemovalLeavesTheFolderCompleteOrAbsent_data()
    {
        QTest::addColumn<QString>("call");
        for (const char* call : {"mkdir", "rename", "unlinkat", "openat"})
            QTest::newRow(call) << QString::fromLatin1(call);
    }

    void aKilledRemovalLeavesTheFolderCompleteOrAbsent()
    {
        QFETCH(const QString, call);
        const QTemporaryDir folder;
        const QString path = folder.path() + u"/Pelmora.app"_s;
        QVERIFY(makeFolderTree(path));
        const QStringList whole = folderTreeOf(path);
        int count = 0;
        while (isKilledAt(call, count + 1, {worker, u"remove"_s, path})) {
            ++count;
            if (QFile::exists(path))
                QCOMPARE(folderTreeOf(path), whole);
            else
                QVERIFY(makeFolderTree(path));
            QVERIFY(count < 200);
        }
        QVERIFY(count > 0);
        QVERIFY(!QFile::exists(path));
    }
};

template class RunnableTests<tst_FolderCopyInterrupted, QCoreApplication>;
#include "tst_foldercopyinterrupted.moc"
