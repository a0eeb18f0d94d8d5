#include "platform/NativePath.h"
#include "platform/files/FailedWrites.h"
#include "platform/files/PrivateFile.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/platform/FileSizeLimit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class tst_PrivateFile : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void aNewFileIsReadableByItsOwnerOnly()
    {
        const mode_t before = umask(0);
        const QString path = m_folder.filePath(u"new"_s);
        const auto written = writePrivateFile(path, "content");
        umask(before);
        QVERIFY(written.has_value());
        QCOMPARE(contentOf(path), QByteArray("content"));
        QCOMPARE(modeOf(path), 0600U);
    }

    void aReadableFileBecomesPrivate()
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
            ignoreSignalsOfFailedWrites(); // as all our programs do
            const FileSizeLimit limit(1000);
            const auto written = writePrivateFile(path, QByteArray(100'000, 'x'));
            QVERIFY(!written.has_value());
            QVERIFY(!written.error().reason.isEmpty());
        }
        QCOMPARE(contentOf(path), QByteArray("old"));
        QCOMPARE(namesIn(folder.path()), QStringList{u"kept"_s});
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

    void filesLeftByAKilledWriterAreRemoved()
    {
        const QTemporaryDir folder;
        for (const char* name : {".pelmora-AbCdEf", ".pelmora-000000", ".pelmora-zzzzzz"})
            QVERIFY(writeFile(folder.filePath(QString::fromLatin1(name)), "x"));
        QVERIFY(writePrivateFile(folder.filePath(u"new"_s), "content").has_value());
        QCOMPARE(namesIn(folder.path()), QStringList{u"new"_s});
    }

    void aTemporaryFileIsKeptWhileItsWriterRuns()
    {
        const QTemporaryDir folder;
        const QString leftover = folder.filePath(u".pelmora-AbCdEf"_s);
        QVERIFY(writeFile(leftover, "x"));
        QFile writer(leftover);
        QVERIFY(writer.open(QIODevice::ReadWrite));
        QCOMPARE(flock(writer.handle(), LOCK_EX | LOCK_NB), 0);
        QVERIFY(writePrivateFile(folder.filePath(u"new"_s), "content").has_value());
        QCOMPARE(namesIn(folder.path()), (QStringList{u".pelmora-AbCdEf"_s, u"new"_s}));
        writer.close();
        QVERIFY(writePrivateFile(folder.filePath(u"new"_s), "content").has_value());
        QCOMPARE(namesIn(folder.path()), QStringList{u"new"_s});
    }

    void filesWithSimilarNamesAreKept()
    {
        const QTemporaryDir folder;
        const QTemporaryDir elsewhere;
        QStringList names{u".pelmora-abcde"_s, u".pelmora-abcdefg"_s,     u".pelmora-abc_ef"_s, u".pelmora-abcdé"_s,
                          u"pelmora-abcdef"_s, u".pelmora-copy-abcdef"_s, u".PELMORA-abcdef"_s};
        for (const QString& name : names)
            QVERIFY(writeFile(folder.filePath(name), "x"));
        const QString kept = elsewhere.filePath(u"kept"_s);
        QVERIFY(writeFile(kept, "x"));
        QVERIFY(QFile::link(kept, folder.filePath(u".pelmora-linked"_s)));
        names.append(u".pelmora-linked"_s);
        QVERIFY(QDir(folder.path()).mkdir(u".pelmora-folder"_s));
        QCOMPARE(mkfifo(QFile::encodeName(folder.filePath(u".pelmora-pipe00"_s)).constData(), 0600), 0);
        names.append({u".pelmora-folder"_s, u".pelmora-pipe00"_s, u"new"_s});
        QVERIFY(writePrivateFile(folder.filePath(u"new"_s), "content").has_value());
        QStringList found = namesIn(folder.path());
        found.sort();
        names.sort();
        QCOMPARE(found, names);
        QCOMPARE(contentOf(kept), QByteArray("x"));
    }

    void leftoversOfOtherUsersAreKept()
    {
        if (geteuid() != 0)
            QSKIP("Only root can make a file of another owner.");
        const QTemporaryDir folder;
        const QString leftover = folder.filePath(u".pelmora-AbCdEf"_s);
        QVERIFY(writeFile(leftover, "x"));
        QCOMPARE(chown(QFile::encodeName(leftover).constData(), 65534, 65534), 0);
        QVERIFY(writePrivateFile(folder.filePath(u"new"_s), "content").has_value());
        QCOMPARE(namesIn(folder.path()), (QStringList{u".pelmora-AbCdEf"_s, u"new"_s}));
    }

    void aNameThatIsNotUtf8IsNotChanged()
    {
        const QByteArray name = QFile::encodeName(m_folder.path()) + "/Zo\xE9";
        QVERIFY(writePrivateFile(pathFromBytes(name), "content").has_value());
        QCOMPARE(::unlink(name.constData()), 0);
    }

    void aPathThatEndsWithASlashIsAFolder()
    {
        QCOMPARE(writePrivateFile(m_folder.path() + u'/', "x").error().reason, u"un dossier porte déjà ce nom"_s);
    }

    void aFolderAtTheFilesPathGivesAnError()
    {
        QVERIFY(QDir(m_folder.path()).mkdir(u"folder"_s));
        const auto written = writePrivateFile(m_folder.filePath(u"folder"_s), "x");
        QVERIFY(!written.has_value());
        QCOMPARE(written.error().reason, u"un dossier porte déjà ce nom"_s);
    }

    void aMissingFolderGivesAnError()
    {
        const auto written = writePrivateFile(m_folder.filePath(u"absent/file"_s), "x");
        QVERIFY(!written.has_value());
        QCOMPARE(written.error().reason, u"le dossier n’existe pas"_s);
    }
};

template class RunnableTests<tst_PrivateFile, void>;
#include "tst_privatefile.moc"
