#include "support/move/RunningPrograms.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString executableOf(qint64 process, const QList<RunningProgram>& programs)
{
    const auto isIt = [process](const RunningProgram& program) { return program.processIdentifier == process; };
    const auto program = std::ranges::find_if(programs, isIt);
    return program == programs.end() ? QString() : program->executable;
}

} // namespace

class tst_RunningPrograms : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void thisProgramIsFoundAsRunning()
    {
        QCOMPARE(executableOf(QCoreApplication::applicationPid(), runningPrograms()),
                 QCoreApplication::applicationFilePath());
    }

    void aProgramRunsUntilItEnds()
    {
        const QTemporaryDir folder;
        const QString program = folder.path() + u"/L'été d\"Anne"_s;
        QVERIFY(QFile::copy(QStandardPaths::findExecutable(u"sleep"_s), program));
        QProcess process;
        process.start(program, {u"60"_s});
        QVERIFY(process.waitForStarted());
        const qint64 identifier = process.processId();
        QCOMPARE(executableOf(identifier, runningPrograms()), program);
        process.kill();
        QVERIFY(process.waitForFinished());
        QCOMPARE(executableOf(identifier, runningPrograms()), QString());
    }

    void aProgramWithAHiddenExecutableIsFoundByItsCommandLine()
    {
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"12/cmdline"_s), QByteArray("/opt/a b/pelmora\0--simulate\0", 28)));
        QVERIFY(writeFile(folder.filePath(u"13/cmdline"_s), QByteArray("pelmora\0", 8)));
        QVERIFY(writeFile(folder.filePath(u"14/cmdline"_s), QByteArray()));
        QVERIFY(writeFile(folder.filePath(u"self/cmdline"_s), QByteArray("/bin/x\0", 7)));
        QVERIFY(QDir().mkpath(folder.path() + "/15"_L1));
        const QList<RunningProgram> programs = runningPrograms(folder.path());
        QCOMPARE(programs.size(), 1);
        QCOMPARE(programs.first().processIdentifier, 12);
        QCOMPARE(programs.first().executable, u"/opt/a b/pelmora"_s);
    }
};

template class RunnableTests<tst_RunningPrograms, QCoreApplication>;
#include "tst_runningprograms.moc"
