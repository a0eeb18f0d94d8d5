#include "platform/PrivateFile.h"
#include "tests/platform/FileSizeLimit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

unsigned modeOf(const QString& path)
{
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

} // namespace

class tst_PrivateFile : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void aNewFileIsReadableByItsOwnerAlone()
    {
        const mode_t before = umask(0);
        const QString path = m_folder.filePath(u"new"_s);
        const auto written = writePrivateFile(path, "content");
        umask(before);
        QVERIFY(written.has_value());
        QCOMPARE(contentOf(path), QByteArray("content"));
        QCOMPARE(modeOf(path), 0600U);
    }

    void aFileThatEverybodyCouldReadBecomesPrivate()
    {
        const QString path = m_folder.filePath(u"open"_s);
        QVERIFY(writePrivateFile(path, "old").has_value());
        QCOMPARE(chmod(QFile::encodeName(path).constData(), 0644), 0);
        QVERIFY(writePrivateFile(path, "new").has_value());
        QCOMPARE(contentOf(path), QByteArray("new"));
        QCOMPARE(modeOf(path), 0600U);
    }

    void aWriteThatFailsLeavesTheOldFileAndNothingElse()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"kept"_s);
        QVERIFY(writePrivateFile(path, "old").has_value());
        {
            const FileSizeLimit limit(1000);
            const auto written = writePrivateFile(path, QByteArray(100'000, 'x'));
            QVERIFY(!written.has_value());
            QVERIFY(!written.error().isEmpty());
        }
        QCOMPARE(contentOf(path), QByteArray("old"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), {u"kept"_s});
    }

    void theLongestNameCanBeWrittenAgain()
    {
        const QString path = m_folder.filePath(QString(255, u'x'));
        QVERIFY(writePrivateFile(path, "old").has_value());
        QVERIFY(writePrivateFile(path, "new").has_value());
        QCOMPARE(contentOf(path), QByteArray("new"));
    }

    void aLinkOfTheSameNameIsReplacedAndNotFollowed()
    {
        const QString path = m_folder.filePath(u"link"_s);
        const QString elsewhere = m_folder.filePath(u"elsewhere"_s);
        QVERIFY(writePrivateFile(elsewhere, "kept").has_value());
        QVERIFY(QFile::link(elsewhere, path));
        QVERIFY(writePrivateFile(path, "new").has_value());
        QCOMPARE(contentOf(path), QByteArray("new"));
        QCOMPARE(contentOf(elsewhere), QByteArray("kept"));
        QVERIFY(!QFileInfo(path).isSymLink());
    }

    void aFolderInTheWayIsTold()
    {
        QVERIFY(QDir(m_folder.path()).mkdir(u"folder"_s));
        const auto written = writePrivateFile(m_folder.filePath(u"folder"_s), "x");
        QVERIFY(!written.has_value());
        QCOMPARE(written.error(), u"un dossier porte déjà ce nom"_s);
    }

    void aMissingFolderIsTold()
    {
        const auto written = writePrivateFile(m_folder.filePath(u"absent/file"_s), "x");
        QVERIFY(!written.has_value());
        QCOMPARE(written.error(), u"le dossier n’existe pas"_s);
    }
};

QTEST_APPLESS_MAIN(tst_PrivateFile)
#include "tst_privatefile.moc"
