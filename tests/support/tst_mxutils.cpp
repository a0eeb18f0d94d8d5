#include "platform/NativePath.h"
#include "support/MXUtils.h"
#include "tests/common/Files.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class tst_MXUtils : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    LogCapture m_log;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        QVERIFY(writeFile(m_folder.filePath(u"file"_s), {}));
    }

    void init() { m_log.clear(); }

    void anExistingFolderIsUsable()
    {
        QVERIFY(MXUtils::checkFolderAtPath(m_folder.path(), false));
        QVERIFY(MXUtils::checkFolderAtPath(m_folder.path(), true));
    }

    void aFileAtTheFoldersPathIsRefusedAndKept()
    {
        QVERIFY(!MXUtils::checkFolderAtPath(m_folder.filePath(u"file"_s), true));
        QVERIFY(QFile::exists(m_folder.filePath(u"file"_s)));
        QCOMPARE(m_log.lines(), QStringList());
    }

    void aMissingFolderIsMadeOnlyOnRequest()
    {
        const QString path = m_folder.filePath(u"é/b c/d"_s);
        QVERIFY(!MXUtils::checkFolderAtPath(path, false));
        QVERIFY(!QDir(path).exists());
        QVERIFY(MXUtils::checkFolderAtPath(path, true));
        QVERIFY(QDir(path).exists());
    }

    void aNewFolderIsPrivateAndItsParentsHaveDefaultPermissions_data()
    {
        QTest::addColumn<QString>("end");
        QTest::newRow("plain") << u""_s;
        QTest::newRow("slash") << u"/"_s;
        QTest::newRow("slashes and dots") << u"//.//"_s;
    }

    void aNewFolderIsPrivateAndItsParentsHaveDefaultPermissions()
    {
        QFETCH(const QString, end);
        const QTemporaryDir folder;
        const mode_t before = umask(0);
        const bool made = MXUtils::checkFolderAtPath(folder.filePath(u"a/b"_s) + end, true);
        umask(before);
        QVERIFY(made);
        QCOMPARE(modeOf(folder.filePath(u"a"_s)), 0777U);
        QCOMPARE(modeOf(folder.filePath(u"a/b"_s)), 0700U);
    }

    void anExistingFolderKeepsItsPermissions()
    {
        const QTemporaryDir folder;
        QCOMPARE(chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
        QVERIFY(MXUtils::checkFolderAtPath(folder.path(), true));
        QCOMPARE(modeOf(folder.path()), 0755U);
    }

    void aNameThatIsNotUtf8IsNotChanged()
    {
        const QByteArray name = QFile::encodeName(m_folder.path()) + "/Zo\xE9";
        QVERIFY(MXUtils::checkFolderAtPath(pathFromBytes(name), true));
        QVERIFY(MXUtils::checkFolderAtPath(pathFromBytes(name), false));
        QCOMPARE(::rmdir(name.constData()), 0);
    }

    void aFolderThatCannotBeMadeIsLogged()
    {
        const QString path = m_folder.filePath(u"file/below"_s);
        QVERIFY(!MXUtils::checkFolderAtPath(path, true));
        const QStringList expected{u"Error on folder create '"_s + path + u"' : Not a directory"_s};
        QCOMPARE(m_log.lines(), expected);
        QCOMPARE(m_log.lines(MXLog::Error), expected);
    }

    void aTildeIsNotReplacedByTheHome()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        const bool made = MXUtils::checkFolderAtPath(u"~/x"_s, true);
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(made);
        QVERIFY(QDir(m_folder.filePath(u"~/x"_s)).exists());
    }
};

template class RunnableTests<tst_MXUtils, QCoreApplication>;
#include "tst_mxutils.moc"
