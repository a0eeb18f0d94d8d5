#include "support/move/MoveCommands.h"
#include "support/move/PortableBundle.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_PortableBundle : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void onlyAFolderWithTheBundlesNameIsABundle_data()
    {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("bundle");
        const QString none;
        QTest::newRow("portable") << u"/home/anne/Pelmora.app/libexec/pelmora/pelmora-window"_s
                                  << u"/home/anne/Pelmora.app"_s;
        QTest::newRow("renamed") << u"/home/anne/Pelmora (2).app/libexec/pelmora/pelmora-window"_s
                                 << u"/home/anne/Pelmora (2).app"_s;
        QTest::newRow("nested") << u"/a/Autre.app/Pelmora.app/libexec/pelmora/pelmora-window"_s
                                << u"/a/Autre.app/Pelmora.app"_s;
        QTest::newRow("installed") << u"/usr/libexec/pelmora/pelmora-window"_s << none;
        QTest::newRow("installed below an application")
            << u"/opt/Autre.app/usr/libexec/pelmora/pelmora-window"_s << none;
        QTest::newRow("built") << u"/home/anne/pelmora/build/stage/libexec/pelmora/pelmora-window"_s << none;
        QTest::newRow("in another folder") << u"/home/anne/Pelmora.app/bin/pelmora"_s << none;
        QTest::newRow("only the extension") << u"/home/anne/.app/libexec/pelmora/pelmora-window"_s << none;
        QTest::newRow("another case") << u"/home/anne/Pelmora.APP/libexec/pelmora/pelmora-window"_s << none;
        QTest::newRow("root") << u"/libexec/pelmora/pelmora-window"_s << none;
    }

    void onlyAFolderWithTheBundlesNameIsABundle()
    {
        QFETCH(const QString, executable);
        QFETCH(const QString, bundle);
        QCOMPARE(portableBundleOf(executable).value_or(QString()), bundle);
    }

    void aProgramBelongsToTheNearestBundle_data()
    {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("bundle");
        QTest::newRow("its program") << u"/home/anne/Pelmora.app/libexec/pelmora/pelmora-window"_s
                                     << u"/home/anne/Pelmora.app"_s;
        QTest::newRow("its card service") << u"/a/Pelmora.app/libexec/pelmora/com.morvel.lvit"_s << u"/a/Pelmora.app"_s;
        QTest::newRow("nested") << u"/a/Autre.app/Pelmora.app/bin/pelmora"_s << u"/a/Autre.app/Pelmora.app"_s;
        QTest::newRow("at the root") << u"/Pelmora.app/bin/pelmora"_s << u"/Pelmora.app"_s;
        QTest::newRow("a program named so") << u"/home/anne/outil.app"_s << QString();
        QTest::newRow("none") << u"/usr/bin/pelmora"_s << QString();
        QTest::newRow("nothing") << QString() << QString();
    }

    void aProgramBelongsToTheNearestBundle()
    {
        QFETCH(const QString, executable);
        QFETCH(const QString, bundle);
        QCOMPARE(bundleOfExecutable(executable).value_or(QString()), bundle);
    }

    void theFoldersAreThoseOfTheUser()
    {
        const QTemporaryDir home;
        qputenv("HOME", QFile::encodeName(home.path()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path() + "/config"_L1));
        const MoveSurroundings values = surroundingsOf(u"/a/Pelmora.app"_s);
        QCOMPARE(values.bundlePath, u"/a/Pelmora.app"_s);
        QCOMPARE(values.processIdentifier, QCoreApplication::applicationPid());
        QCOMPARE(values.userApplicationsFolder, home.path() + "/Applications"_L1);
        QCOMPARE(values.applicationsFolders.first(), home.path() + "/Applications"_L1);
        QVERIFY(values.applicationsFolders.contains("/Applications"_L1));
        QCOMPARE(values.downloadsFolders, QStringList{home.path() + "/Downloads"_L1});
    }

    void foldersAreRecognisedThroughLinks()
    {
        const QTemporaryDir folder;
        const QString home = folder.path() + "/maison"_L1;
        QVERIFY(QDir().mkpath(folder.path() + "/disque/Applications"_L1));
        QVERIFY(QDir().mkpath(folder.path() + u"/disque/Téléchargements"_s));
        QVERIFY(QFile::link(folder.path() + "/disque"_L1, home));
        QVERIFY(QDir().mkpath(folder.path() + "/config"_L1));
        QFile folders(folder.path() + "/config/user-dirs.dirs"_L1);
        QVERIFY(folders.open(QIODevice::WriteOnly));
        QVERIFY(folders.write("XDG_DOWNLOAD_DIR=\"$HOME/Téléchargements\"\n") > 0);
        folders.close();
        qputenv("HOME", QFile::encodeName(home));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.path() + "/config"_L1));
        const MoveSurroundings values = surroundingsOf(u"/a/Pelmora.app"_s);
        QCOMPARE(values.applicationsFolders.first(2),
                 (QStringList{home + "/Applications"_L1, folder.path() + "/disque/Applications"_L1}));
        QCOMPARE(values.downloadsFolders,
                 (QStringList{home + u"/Téléchargements"_s, folder.path() + u"/disque/Téléchargements"_s}));
    }

    void theHomeIsNotADownloadsFolder()
    {
        const QTemporaryDir home;
        QVERIFY(QDir().mkpath(home.path() + "/config"_L1));
        QFile folders(home.path() + "/config/user-dirs.dirs"_L1);
        QVERIFY(folders.open(QIODevice::WriteOnly));
        QVERIFY(folders.write("XDG_DOWNLOAD_DIR=\"$HOME/\"\n") > 0);
        folders.close();
        qputenv("HOME", QFile::encodeName(home.path()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path() + "/config"_L1));
        QCOMPARE(surroundingsOf(u"/a/Pelmora.app"_s).downloadsFolders, QStringList());
    }
};

template class RunnableTests<tst_PortableBundle, QCoreApplication>;
#include "tst_portablebundle.moc"
