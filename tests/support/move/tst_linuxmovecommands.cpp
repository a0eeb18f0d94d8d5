#include "support/move/LinuxMoveCommands.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/MoveTexts.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace MoveTexts;

namespace {

// A bundle whose program writes its arguments, one a line, to the file "started" beside the bundle.
bool makeBundle(const QString& path)
{
    QFile program(path + "/bin/pelmora"_L1);
    return QDir().mkpath(path + "/bin"_L1) && program.open(QIODevice::WriteOnly) &&
           program.write("#!/bin/sh\nprintf '%s\\n' started \"$@\" >\"${0%/*}/../../started.part\"\n"
                         "mv \"${0%/*}/../../started.part\" \"${0%/*}/../../started\"\n") > 0 &&
           program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

/// A bundle and its destination: `const auto [folder, source, destination, isMade] = Bundles();`
struct Bundles
{
    explicit Bundles(const QString& name = u"Pelmora"_s)
        : source(folder.path() + u'/' + name + ".app"_L1)
        , destination(folder.path() + "/Applications/"_L1 + name + ".app"_L1)
        , isMade(makeBundle(source) && QDir().mkpath(folder.path() + "/Applications"_L1))
    {
    }

    QTemporaryDir folder;
    QString source;
    QString destination;
    bool isMade;
};

} // namespace

class tst_LinuxMoveCommands : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theCommandsAreAsExpected()
    {
        const LinuxMoveCommands commands({u"--simulate"_s, u"l'été.xml"_s});
        QCOMPARE(textOf(commands.openRunningCopy(bundle)),
                 u"/bin/sh | -c | "_s + quotedBundle +
                     u"/bin/pelmora '--simulate' 'l'\\''été.xml' >/dev/null 2>&1 </dev/null &"_s);
        QCOMPARE(
            textOf(commands.relaunch(81, bundle)),
            u"/bin/sh | -c | (p=81; while kill -0 $p && ! grep -q '^State:.*Z' /proc/$p/status; do sleep 0.1; done; "_s +
                quotedBundle + u"/bin/pelmora --add-launcher; exec "_s + quotedBundle +
                u"/bin/pelmora '--simulate' 'l'\\''été.xml') >/dev/null 2>&1 </dev/null &"_s);
        QCOMPARE(textOf(commands.ejectImage(u"/dev/loop0"_s)),
                 u"/bin/sh | -c | (d='/dev/loop0'; sleep 5 && udisksctl unmount -b \"$d\" && udisksctl loop-delete -b "
                 "\"$d\") >/dev/null 2>&1 &"_s);
        QCOMPARE(textOf(commands.privilegedDelete(bundle)),
                 u"/bin/sh | -c | d=$(mktemp -d -- \"${0%/*}/.pelmora-administrator-XXXXXX\") && "
                 "mv -T -- \"$0\" \"$d/old\" 2>/dev/null; rm -rf -- \"${0%/*}\"/.pelmora-administrator-* | "_s +
                     bundle);
        QCOMPARE(textOf(commands.privilegedCopy(u"/a b"_s, bundle)),
                 u"/bin/sh | -c | rm -rf -- \"${1%/*}\"/.pelmora-administrator-*; umask 022; "
                 "d=$(mktemp -d -- \"${1%/*}/.pelmora-administrator-XXXXXX\") && mkdir -- \"$d/new\" && "
                 "tar --create --format=posix --one-file-system --directory=\"$0\" --file=\"$d/tar\" . && "
                 "tar --extract --no-same-owner --directory=\"$d/new\" --file=\"$d/tar\" && "
                 "chmod -R a-s,u+rwX,go+rX,go-w -- \"$d/new\" && sync -f -- \"$d/new\" && mv -T -- \"$d/new\" \"$1\"; "
                 "s=$?; rm -rf -- \"$d\"; exit $s | /a b | "_s +
                     bundle);
    }

    void theRunningCopyIsOpenedForAnyPath_data() { strangePaths(); }
    void theRunningCopyIsOpenedForAnyPath()
    {
        QFETCH(const QString, name);
        const auto [folder, path, destination, isMade] = Bundles(name);
        QVERIFY(isMade);
        const MoveCommand command = LinuxMoveCommands({name}).openRunningCopy(path);
        QCOMPARE(QProcess::execute(command.program, command.arguments), 0);
        QTRY_COMPARE(textOfFile(folder.path() + "/started"_L1), u"started\n"_s + name + u'\n');
    }

    void theCopyIsStartedAfterTheProcessHasEnded_data() { strangePaths(); }
    void theCopyIsStartedAfterTheProcessHasEnded()
    {
        QFETCH(const QString, name);
        const auto [folder, path, destination, isMade] = Bundles(name);
        QVERIFY(isMade);
        QProcess running;
        running.start(u"sleep"_s, {u"60"_s});
        QVERIFY(running.waitForStarted());
        const MoveCommand command = LinuxMoveCommands({name}).relaunch(running.processId(), path);
        QCOMPARE(QProcess::execute(command.program, command.arguments), 0);
        QVERIFY(!QFile::exists(folder.path() + "/started"_L1));
        running.kill();
        QVERIFY(running.waitForFinished());
        QTRY_COMPARE(textOfFile(folder.path() + "/started"_L1), u"started\n"_s + name + u'\n');
    }

    void aProcessThatItsParentHasNotReapedHasEnded()
    {
        const auto [folder, path, destination, isMade] = Bundles();
        QVERIFY(isMade);
        // The shell starts a child, then replaces itself with sleep, which never waits for the child. The child ends
        // only after the replacement, because the shell could wait for it.
        QProcess parent;
        parent.start(u"/bin/sh"_s,
                     {u"-c"_s, u"until grep -q sleep /proc/$$/comm; do :; done & echo $!; exec sleep 60"_s});
        QVERIFY(parent.waitForReadyRead());
        const qint64 child = parent.readLine().trimmed().toLongLong();
        QTRY_VERIFY(textOfFile(u"/proc/%1/status"_s.arg(child)).contains("State:\tZ"_L1));
        const MoveCommand command = LinuxMoveCommands().relaunch(child, path);
        QCOMPARE(QProcess::execute(command.program, command.arguments), 0);
        QTRY_COMPARE(textOfFile(folder.path() + "/started"_L1), u"started\n"_s);
        parent.kill();
        QVERIFY(parent.waitForFinished());
    }

    void theAdministratorsCopyIsCompleteAndReplacesNothing()
    {
        const QTemporaryDir folder;
        const QString source = folder.path() + "/l'été/-a b.app"_L1;
        const QString destination = folder.path() + "/Applications/-a b.app"_L1;
        QVERIFY(makeBundle(source));
        QVERIFY(QDir().mkpath(folder.path() + "/Applications"_L1));
        // Files of an interrupted copy.
        QVERIFY(makeBundle(folder.path() + "/Applications/.pelmora-administrator-abcdef/new"_L1));
        const LinuxMoveCommands commands;
        const MoveCommand copy = commands.privilegedCopy(source, destination);
        QCOMPARE(QProcess::execute(copy.program, copy.arguments), 0);
        QCOMPARE(textOfFile(destination + "/bin/pelmora"_L1), textOfFile(source + "/bin/pelmora"_L1));
        QCOMPARE(namesIn(folder.path() + "/Applications"_L1), QStringList{u"-a b.app"_s});
        QCOMPARE(namesIn(destination), QStringList{u"bin"_s});

        // A bundle that was not deleted is unchanged.
        QVERIFY(QProcess::execute(copy.program, copy.arguments) != 0);
        QCOMPARE(namesIn(destination), QStringList{u"bin"_s});
    }

    void theAdministratorsCopyIsReadableByEveryUser()
    {
        const auto [folder, source, destination, isMade] = Bundles();
        QVERIFY(isMade);
        QVERIFY(writeFile(source + "/texte"_L1, {}));
        // Permissions that are too narrow, and others that are too wide.
        QCOMPARE(chmod(QFile::encodeName(source).constData(), 0700), 0);
        QCOMPARE(chmod(QFile::encodeName(source + "/bin"_L1).constData(), 0777), 0);
        QCOMPARE(chmod(QFile::encodeName(source + "/bin/pelmora"_L1).constData(), 06500), 0);
        QCOMPARE(chmod(QFile::encodeName(source + "/texte"_L1).constData(), 0600), 0);
        const MoveCommand copy = LinuxMoveCommands().privilegedCopy(source, destination);
        QCOMPARE(QProcess::execute(copy.program, copy.arguments), 0);
        QCOMPARE(modeOf(destination), 0755U);
        QCOMPARE(modeOf(destination + "/bin"_L1), 0755U);
        QCOMPARE(modeOf(destination + "/bin/pelmora"_L1), 0755U);
        QCOMPARE(modeOf(destination + "/texte"_L1), 0644U);
    }

    void aBundleDeletedByTheAdministratorIsRemoved_data()
    {
        QTest::addColumn<bool>("isThere");
        QTest::addColumn<bool>("wasInterrupted");
        QTest::newRow("an old copy") << true << false;
        QTest::newRow("nothing") << false << false;
        QTest::newRow("an old copy and the rest of an interrupted deletion") << true << true;
        QTest::newRow("the rest of an interrupted deletion") << false << true;
    }

    void aBundleDeletedByTheAdministratorIsRemoved()
    {
        QFETCH(const bool, isThere);
        QFETCH(const bool, wasInterrupted);
        const QTemporaryDir folder;
        const QString path = folder.path() + u"/-l'été b.app"_s;
        QVERIFY(!isThere || makeBundle(path));
        QVERIFY(!wasInterrupted || makeBundle(folder.path() + "/.pelmora-administrator-abcdef/old"_L1));
        const MoveCommand deletion = LinuxMoveCommands().privilegedDelete(path);
        QCOMPARE(QProcess::execute(deletion.program, deletion.arguments), 0);
        QCOMPARE(namesIn(folder.path()), QStringList());
    }

    void otherFoldersBesideTheCopyAreKept()
    {
        const auto [folder, source, destination, isMade] = Bundles();
        QVERIFY(isMade);
        QVERIFY(makeBundle(destination));
        QVERIFY(makeBundle(destination + ".old"_L1));
        QVERIFY(makeBundle(destination + ".part"_L1));
        const LinuxMoveCommands commands;
        for (const MoveCommand& command :
             {commands.privilegedDelete(destination), commands.privilegedCopy(source, destination)})
            QCOMPARE(QProcess::execute(command.program, command.arguments), 0);
        QVERIFY(QFile::exists(destination + ".old/bin/pelmora"_L1));
        QVERIFY(QFile::exists(destination + ".part/bin/pelmora"_L1));
    }

    void permissionsAreNotSetThroughLinks()
    {
        const auto [folder, source, destination, isMade] = Bundles();
        QVERIFY(isMade);
        const QString secret = folder.path() + "/privé"_L1;
        QVERIFY(makeBundle(secret));
        QCOMPARE(chmod(QFile::encodeName(secret).constData(), 0700), 0);
        QVERIFY(QFile::link(secret, source + "/lien"_L1));
        const MoveCommand copy = LinuxMoveCommands().privilegedCopy(source, destination);
        QCOMPARE(QProcess::execute(copy.program, copy.arguments), 0);
        QCOMPARE(QFile::symLinkTarget(destination + "/lien"_L1), secret);
        QCOMPARE(modeOf(secret), 0700U);
    }

    void aCopyInProgressIsNotAccessibleToOthers()
    {
        const auto [folder, source, destination, isMade] = Bundles();
        QVERIFY(isMade);
        QCOMPARE(chmod(QFile::encodeName(source + "/bin/pelmora"_L1).constData(), 06755), 0);
        // This script replaces chmod, which sets the permissions of the copy. It first records the permissions of the
        // folder above the copy.
        QFile watcher(folder.path() + "/programmes/chmod"_L1);
        QVERIFY(QDir().mkpath(folder.path() + "/programmes"_L1) && watcher.open(QIODevice::WriteOnly));
        watcher.write("#!/bin/sh\nfor copy; do :; done\nstat -c %a -- \"${copy%/*}\" >\"${0%/*}/mode\"\n"
                      "exec /bin/chmod \"$@\"\n");
        watcher.close();
        QVERIFY(watcher.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"PATH"_s, folder.path() + "/programmes:"_L1 + environment.value(u"PATH"_s));
        process.setProcessEnvironment(environment);
        const MoveCommand copy = LinuxMoveCommands().privilegedCopy(source, destination);
        process.start(copy.program, copy.arguments);
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(textOfFile(folder.path() + "/programmes/mode"_L1), u"700\n"_s);
        QCOMPARE(modeOf(destination + "/bin/pelmora"_L1), 0755U);
    }

private:
    static void strangePaths()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << u"plain"_s;
        QTest::newRow("blanks") << u" a  b "_s;
        QTest::newRow("quotes") << u"l'été d'\"Anne\" `id` $HOME"_s;
        QTest::newRow("only quotes") << u"''''"_s;
        QTest::newRow("line ends") << u"a\nb\n"_s;
        QTest::newRow("dashes") << u"-rf --"_s;
        QTest::newRow("other letters") << u"Ελλάδα 日本 é"_s;
        QTest::newRow("placeholders") << u"%@ %d %1 \\"_s;
        QTest::newRow("shell") << u"a;b&c|d>e*?[x]~#"_s;
    }
};

template class RunnableTests<tst_LinuxMoveCommands, QCoreApplication>;
#include "tst_linuxmovecommands.moc"
