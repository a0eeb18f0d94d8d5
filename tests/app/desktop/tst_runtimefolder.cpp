#include "app/desktop/RuntimeFolder.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QString pathOf(const FileDescriptor& folder)
{
    return QFileInfo(u"/proc/self/fd/%1"_s.arg(folder.get())).symLinkTarget();
}

QString ownFolder()
{
    return u"/tmp/com.morvel.Pelmora-%1"_s.arg(geteuid());
}

/// A folder with the given rights.
QString folderIn(const QTemporaryDir& parent, mode_t mode)
{
    const QString path = parent.filePath(u"folder"_s);
    QDir().mkdir(path);
    chmod(QFile::encodeName(path).constData(), mode);
    return path;
}

} // namespace

class tst_RuntimeFolder : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_session = qgetenv("XDG_RUNTIME_DIR"); }
    void cleanup() { qputenv("XDG_RUNTIME_DIR", m_session); }

    void theFolderOfTheSessionIsUsed()
    {
        const QTemporaryDir parent;
        const QString folder = folderIn(parent, 0700);
        qputenv("XDG_RUNTIME_DIR", folder.toUtf8());
        QCOMPARE(pathOf(openRuntimeFolder()), folder);
    }

    void withoutASessionFolderAFolderOfTheUserIsUsed_data()
    {
        QTest::addColumn<QByteArray>("session");
        QTest::newRow("not set") << QByteArray();
        QTest::newRow("relative") << QByteArray("run");
        QTest::newRow("absent") << QByteArray("/absent/run");
        QTest::newRow("open to all") << QByteArray("/tmp");
    }
    void withoutASessionFolderAFolderOfTheUserIsUsed()
    {
        QFETCH(const QByteArray, session);
        qputenv("XDG_RUNTIME_DIR", session);
        QCOMPARE(pathOf(openRuntimeFolder()), ownFolder());
        struct stat facts{};
        QCOMPARE(stat(QFile::encodeName(ownFolder()).constData(), &facts), 0);
        QCOMPARE(facts.st_mode & 0777, mode_t{0700});
        QCOMPARE(facts.st_uid, geteuid());
    }

    void aFolderThatOthersMayEnterIsRefused_data()
    {
        QTest::addColumn<int>("mode");
        for (const int mode : {0701, 0710, 0740, 0720, 0777, 01777})
            QTest::addRow("%o", static_cast<unsigned>(mode)) << mode;
    }
    void aFolderThatOthersMayEnterIsRefused()
    {
        QFETCH(const int, mode);
        const QTemporaryDir parent;
        QVERIFY(!openPrivateFolder(folderIn(parent, static_cast<mode_t>(mode))).isValid());
    }

    void aLinkIsRefused()
    {
        const QTemporaryDir parent;
        const QString folder = folderIn(parent, 0700);
        QVERIFY(openPrivateFolder(folder).isValid());
        QVERIFY(QFile::link(folder, parent.filePath(u"lien"_s)));
        QVERIFY(!openPrivateFolder(parent.filePath(u"lien"_s)).isValid());
    }

    void anotherUsersFolderIsRefused()
    {
        const QTemporaryDir parent;
        const QString folder = folderIn(parent, 0700);
        constexpr uid_t nobody = 65534;
        if (chown(QFile::encodeName(folder).constData(), nobody, static_cast<gid_t>(-1)) != 0)
            QSKIP("Only root can change the owner of a folder.");
        QVERIFY(!openPrivateFolder(folder).isValid());
    }

    void aFileIsRefused()
    {
        const QTemporaryDir parent;
        QVERIFY(writeFile(parent.filePath(u"fichier"_s), {}));
        QVERIFY(!openPrivateFolder(parent.filePath(u"fichier"_s)).isValid());
    }

private:
    QByteArray m_session;
};

template class RunnableTests<tst_RuntimeFolder, QCoreApplication>;
#include "tst_runtimefolder.moc"
