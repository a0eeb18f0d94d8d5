#include "platform/files/FailedWrites.h"
#include "support/move/FolderCopy.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/platform/FileSizeLimit.h"
#include "tests/support/move/FolderTree.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class tst_FolderCopy : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(makeFolderTree(source()));
        QVERIFY(QDir().mkpath(m_folder->path() + "/Applications"_L1));
    }

    void cleanup() { m_folder.reset(); }

    void aCopyIsComplete()
    {
        QVERIFY(copyFolder(source(), target()));
        QCOMPARE(folderTreeOf(target()), folderTreeOf(source()));
        QCOMPARE(namesIn(m_folder->path() + "/Applications"_L1), QStringList{u"Pelmora.app"_s});
        QCOMPARE(QFileInfo(target()).permissions(), QFileInfo(source()).permissions());
    }

    void modificationTimesAreKept()
    {
        const QDateTime time(QDate(2020, 2, 3), QTime(4, 5, 6));
        QFile file(source() + "/bin/pelmora"_L1);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
        file.close();
        const QDateTime folderTime = QFileInfo(source() + "/bin"_L1).lastModified();
        QVERIFY(copyFolder(source(), target()));
        QCOMPARE(QFileInfo(target() + "/bin/pelmora"_L1).lastModified(), time);
        QCOMPARE(QFileInfo(target() + "/bin"_L1).lastModified(), folderTime);
    }

    void aReadOnlySourceMakesACopyThatCanBeReplaced()
    {
        const auto readOnly = QFile::ReadOwner | QFile::ExeOwner;
        QVERIFY(QFile::setPermissions(source() + "/bin/pelmora"_L1, readOnly));
        QVERIFY(QFile::setPermissions(source() + "/bin"_L1, readOnly));
        QVERIFY(QFile::setPermissions(source(), readOnly));
        const bool isCopied = copyFolder(source(), target()).has_value();
        QVERIFY(QFile::setPermissions(source() + "/bin"_L1, readOnly | QFile::WriteOwner));
        QVERIFY(QFile::setPermissions(source(), readOnly | QFile::WriteOwner));
        QVERIFY(isCopied);
        for (const QString& path : {target(), target() + "/bin"_L1, target() + "/bin/pelmora"_L1})
            QVERIFY2(QFileInfo(path).permissions().testFlag(QFile::WriteOwner), qPrintable(path));
    }

    void anExistingDestinationIsNotChanged()
    {
        QVERIFY(QDir().mkpath(target()));
        QCOMPARE(copyFolder(source(), target()), (std::expected<void, QString>(std::unexpect, u"File exists"_s)));
        QCOMPARE(folderTreeOf(target()), QStringList());
        QCOMPARE(namesIn(m_folder->path() + "/Applications"_L1), QStringList{u"Pelmora.app"_s});
    }

    void aMissingSourceIsAnError()
    {
        QVERIFY(!copyFolder(m_folder->path() + "/rien"_L1, target()));
        QCOMPARE(namesIn(m_folder->path() + "/Applications"_L1), QStringList());
        QVERIFY(!copyFolder(source(), m_folder->path() + "/rien/Pelmora.app"_L1));
    }

    void anEntryThatIsNeitherFileNorFolderIsRefused()
    {
        QCOMPARE(mkfifo(QFile::encodeName(source() + "/tube"_L1).constData(), 0600), 0);
        QVERIFY(!copyFolder(source(), target()));
        QCOMPARE(namesIn(m_folder->path() + "/Applications"_L1), QStringList());
    }

    void aFailureLeavesNothingBehind()
    {
        // A name that is too long for any file system.
        QVERIFY(!copyFolder(source(), m_folder->path() + "/Applications/"_L1 + QString(300, u'x')));
        QCOMPARE(namesIn(m_folder->path() + "/Applications"_L1), QStringList());
    }

    void aFullDiskLeavesNothingBehind()
    {
        const QStringList whole = folderTreeOf(source());
        std::expected<void, QString> copied;
        {
            ignoreSignalsOfFailedWrites();    // as all our programs do
            const FileSizeLimit limit(50000); // half of the largest file
            copied = copyFolder(source(), target());
        }
        QCOMPARE(copied, (std::expected<void, QString>(std::unexpect, u"File too large"_s)));
        QCOMPARE(namesIn(m_folder->path() + "/Applications"_L1), QStringList());
        QCOMPARE(folderTreeOf(source()), whole);
    }

    void anInterruptedCopyIsRemovedByTheNextOne()
    {
        QVERIFY(QDir().mkpath(m_folder->path() + "/Applications/.pelmora-copy-Ab12xY/bin"_L1));
        QVERIFY(QDir().mkpath(m_folder->path() + "/Applications/.autre"_L1));
        QVERIFY(copyFolder(source(), target()));
        QCOMPARE(namesIn(m_folder->path() + "/Applications"_L1), (QStringList{u".autre"_s, u"Pelmora.app"_s}));
    }

    void aCopyInProgressIsNotRemoved()
    {
        const QString other = m_folder->path() + "/Applications/.pelmora-copy-Ab12xY"_L1;
        QVERIFY(makeFolderTree(other));
        const QStringList whole = folderTreeOf(other);
        const int lock = open(QFile::encodeName(other).constData(), O_RDONLY | O_DIRECTORY);
        QVERIFY(lock >= 0);
        const int locked = flock(lock, LOCK_EX);
        const bool isCopied = copyFolder(source(), target()).has_value();
        close(lock);
        QCOMPARE(locked, 0);
        QVERIFY(isCopied);
        QCOMPARE(folderTreeOf(other), whole);
    }

    void removingAFolderDeletesItsContent()
    {
        QVERIFY(removeFolder(source()));
        QCOMPARE(namesIn(QFileInfo(source()).path()), QStringList());
    }

    void aMissingFolderCannotBeRemoved()
    {
        const QStringList before = folderTreeOf(source());
        QCOMPARE(removeFolder(source() + "/rien"_L1),
                 (std::expected<void, QString>(std::unexpect, u"No such file or directory"_s)));
        QCOMPARE(folderTreeOf(source()), before);
    }

private:
    [[nodiscard]] QString source() const { return m_folder->path() + u"/L'été -à/Pelmora.app"_s; }
    [[nodiscard]] QString target() const { return m_folder->path() + "/Applications/Pelmora.app"_L1; }

    std::unique_ptr<QTemporaryDir> m_folder;
};

template class RunnableTests<tst_FolderCopy, void>;
#include "tst_foldercopy.moc"
