#include "support/move/LinuxMoveOperations.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_LinuxMoveOperations : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data/share"_s)));
        m_defaults = std::make_unique<UserDefaults>(path(u"Pelmora.conf"_s));
        m_platform = std::make_unique<LinuxMoveOperations>(*m_defaults);
    }

    void cleanup()
    {
        m_platform.reset();
        m_defaults.reset();
        m_folder.reset();
    }

    void theBoxIsStoredUnderItsKey()
    {
        QVERIFY(!m_platform->isQuestionSuppressed());
        m_platform->suppressQuestion();
        QVERIFY(m_platform->isQuestionSuppressed());
        QCOMPARE(contentOf(path(u"Pelmora.conf"_s)), "[General]\nmoveToApplicationsFolderAlertSuppress=true\n");

        QVERIFY(writeFile(path(u"Autre.conf"_s), "[General]\nmoveToApplicationsFolderAlertSuppress=false\n"));
        UserDefaults others(path(u"Autre.conf"_s));
        QVERIFY(!LinuxMoveOperations(others).isQuestionSuppressed());
    }

    void fileQueriesGiveTheStateOfTheFileSystem()
    {
        QVERIFY(writeFile(path(u"fichier"_s), "x"));
        const MoveOperations::ItemFacts file = m_platform->factsOf(path(u"fichier"_s));
        QVERIFY(file.exists && !file.isFolder && file.isWritable);
        const MoveOperations::ItemFacts folder = m_platform->factsOf(m_folder->path());
        QVERIFY(folder.exists && folder.isFolder && folder.isWritable);
        const MoveOperations::ItemFacts missing = m_platform->factsOf(path(u"rien"_s));
        QVERIFY(!missing.exists && !missing.isFolder && !missing.isWritable);
    }

    void allEntriesOfAFolderAreListed()
    {
        QVERIFY(QDir().mkpath(path(u"dossier/a.app"_s)));
        QVERIFY(writeFile(path(u"dossier/.caché"_s), "x"));
        QVERIFY(QFile::link(u"/nulle/part"_s, path(u"dossier/lien"_s)));
        QStringList entries = m_platform->entriesOf(path(u"dossier"_s));
        entries.sort();
        QCOMPARE(entries, (QStringList{u".caché"_s, u"a.app"_s, u"lien"_s}));
        QCOMPARE(m_platform->entriesOf(path(u"rien"_s)), QStringList());
    }

    void symbolicLinksAreResolved()
    {
        QVERIFY(QDir().mkpath(path(u"vrai"_s)));
        QVERIFY(QFile::link(path(u"vrai"_s), path(u"lien"_s)));
        QCOMPARE(m_platform->resolvingSymbolicLinks(path(u"lien"_s)), path(u"vrai"_s));
        QCOMPARE(m_platform->resolvingSymbolicLinks(path(u"rien"_s)), path(u"rien"_s));
    }

    void theTrashIsThatOfTheUser()
    {
        const QString bundle = path(u"L'été/Pelmora.app"_s);
        QVERIFY(writeFile(bundle + "/bin/pelmora"_L1, "programme"));
        QVERIFY(m_platform->trashItem(bundle));
        QVERIFY(!QFile::exists(bundle));
        QCOMPARE(contentOf(path(u"data/share/Trash/files/Pelmora.app/bin/pelmora"_s)), "programme");
        const QByteArray information = contentOf(path(u"data/share/Trash/info/Pelmora.app.trashinfo"_s));
        QVERIFY(QByteArray::fromPercentEncoding(information).contains("\nPath=" + bundle.toUtf8() + '\n'));
    }

    void withoutATrashNothingIsMoved_data()
    {
        QTest::addColumn<QString>("dataFolder");
        // A leading "." is the test's folder.
        QTest::newRow("a file where the data lie") << u"./fichier"_s;
        QTest::newRow("a file at a parent folder's path") << u"./fichier/share"_s;
        QTest::newRow("a file at the trash's path") << u"./dossier"_s;
        QTest::newRow("a folder that depends on the current one") << u"relatif"_s;
    }

    void withoutATrashNothingIsMoved()
    {
        QFETCH(const QString, dataFolder);
        const QString bundle = path(u"Pelmora.app"_s);
        QVERIFY(writeFile(bundle + "/bin/pelmora"_L1, "programme"));
        QVERIFY(writeFile(path(u"fichier"_s), "x"));
        QVERIFY(writeFile(path(u"dossier/Trash"_s), "x"));
        qputenv("XDG_DATA_HOME",
                QFile::encodeName(dataFolder.startsWith(u'.') ? QDir::cleanPath(path(dataFolder)) : dataFolder));
        const QString before = QDir::currentPath();
        QVERIFY(QDir().mkpath(path(u"ici"_s)));
        QVERIFY(QDir::setCurrent(path(u"ici"_s)));
        const bool isTrashed = m_platform->trashItem(bundle);
        const QStringList here = namesIn(path(u"ici"_s));
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(here, QStringList());
        QVERIFY(!isTrashed);
        QCOMPARE(contentOf(bundle + "/bin/pelmora"_L1), "programme");
    }

    void aMissingItemCannotBeTrashed()
    {
        QVERIFY(!m_platform->trashItem(path(u"rien"_s)));
        QVERIFY(!m_platform->recycleItem(u"rien"_s, m_folder->path()));
    }

    void runningBundlesAreThoseOfThePrograms()
    {
        const QString bundle = path(u"L'été/Pelmora.app"_s);
        QVERIFY(QDir().mkpath(bundle + "/bin"_L1));
        QVERIFY(QFile::copy(QStandardPaths::findExecutable(u"sleep"_s), bundle + "/bin/pelmora"_L1));
        QVERIFY(!m_platform->runningBundles().contains(bundle));
        QProcess process;
        process.start(bundle + "/bin/pelmora"_L1, {u"60"_s});
        QVERIFY(process.waitForStarted());
        QVERIFY(m_platform->runningBundles().contains(bundle));
        process.kill();
        QVERIFY(process.waitForFinished());
        QVERIFY(!m_platform->runningBundles().contains(bundle));
    }

    void commandsAreWaitedFor()
    {
        QCOMPARE(m_platform->run({u"/bin/sh"_s, {u"-c"_s, u"cat; echo é; exit 3"_s}}), std::optional(3));
        QCOMPARE(m_platform->run({u"/bin/sh"_s, {u"-c"_s, u"kill -KILL $$"_s}}), std::optional<int>());
        QCOMPARE(m_platform->run({u"/nulle/part"_s, {}}), std::optional<int>());
    }

    void startedCommandsAreNotWaitedFor()
    {
        // The command waits for a text that is written after its start.
        QCOMPARE(m_platform->run({u"mkfifo"_s, {path(u"tube"_s)}}), std::optional(0));
        m_platform->start({u"/bin/sh"_s, {u"-c"_s, u"cat '%1' >'%2'"_s.arg(path(u"tube"_s), path(u"fin"_s))}});
        QFile pipe(path(u"tube"_s));
        QVERIFY(pipe.open(QIODevice::WriteOnly));
        QVERIFY(pipe.write("mot") == 3);
        pipe.close();
        QTRY_COMPARE(contentOf(path(u"fin"_s)), "mot");
    }

    void theFolderOfTheTestIsOnAVolume()
    {
        const std::optional<MoveOperations::Volume> volume = m_platform->volumeOf(u"/"_s);
        QVERIFY(volume);
        QVERIFY(volume->isRootFileSystem);
        QVERIFY(!m_platform->volumeOf(path(u"rien"_s)));
        QVERIFY(m_platform->mountedImages().contains("<key>images</key>"));
    }

private:
    [[nodiscard]] QString path(const QString& name) const { return m_folder->path() + u'/' + name; }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<LinuxMoveOperations> m_platform;
};

template class RunnableTests<tst_LinuxMoveOperations, QCoreApplication>;
#include "tst_linuxmoveoperations.moc"
