#include "platform/files/FailedWrites.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/platform/FileSizeLimit.h"
#include "update/UpdatePackage.h"

#include <QDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

class tst_UpdatePackage : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_home;
    QString m_folder = m_home.filePath(u"cache/updates"_s);

private Q_SLOTS:
    void cleanup() { QVERIFY(QDir(m_folder).removeRecursively()); }

    void aPackageIsAccessibleToItsOwnerOnly()
    {
        const mode_t before = umask(0);
        const auto package = UpdatePackage::create(m_folder, u"a.deb"_s);
        umask(before);
        QVERIFY(package.has_value());
        QCOMPARE(modeOf((*package)->path()), 0600U);
        QCOMPARE(modeOf(QFileInfo((*package)->path()).path()), 0700U);
        QCOMPARE(modeOf(m_folder), 0700U);
        QCOMPARE(QFileInfo((*package)->path()).fileName(), u"a.deb"_s);
    }

    void aFolderThatOthersCouldWriteToIsMadePrivate()
    {
        QVERIFY(QDir().mkpath(m_folder));
        QVERIFY(chmod(QFile::encodeName(m_folder).constData(), 0777) == 0);
        QVERIFY(UpdatePackage::create(m_folder, u"a.deb"_s).has_value());
        QCOMPARE(modeOf(m_folder), 0700U);
    }

    void aPackageThatIsNotKeptIsRemoved()
    {
        {
            const auto package = UpdatePackage::create(m_folder, u"a.deb"_s);
            QVERIFY(package.has_value());
            QVERIFY(!(*package)->write("content"));
            QCOMPARE(QFileInfo((*package)->path()).size(), 7);
        }
        QCOMPARE(namesIn(m_folder), QStringList());
    }

    void aKeptPackageIsRemovedByTheNextOne()
    {
        QString path;
        {
            const auto package = UpdatePackage::create(m_folder, u"a.deb"_s);
            QVERIFY(package.has_value());
            (*package)->keep();
            path = (*package)->path();
        }
        QVERIFY(QFileInfo::exists(path));
        const auto next = UpdatePackage::create(m_folder, u"b.deb"_s);
        QVERIFY(next.has_value());
        QVERIFY(!QFileInfo::exists(path));
        QCOMPARE(namesIn(m_folder).size(), 1);
    }

    void otherFilesInTheFolderAreKept()
    {
        QVERIFY(QDir().mkpath(m_folder + "/other"_L1));
        QVERIFY(QDir().mkpath(m_home.filePath(u"elsewhere/kept"_s)));
        QVERIFY(QFile::link(m_home.filePath(u"elsewhere"_s), m_folder + "/package-link"_L1));
        QVERIFY(UpdatePackage::create(m_folder, u"a.deb"_s).has_value());
        QCOMPARE(namesIn(m_folder), (QStringList{u"other"_s, u"package-link"_s}));
        QVERIFY(QFileInfo::exists(m_home.filePath(u"elsewhere/kept"_s)));
    }

    void aFullDiskIsReported()
    {
        const auto package = UpdatePackage::create(m_folder, u"a.deb"_s);
        QVERIFY(package.has_value());
        ignoreSignalsOfFailedWrites(); // as all our programs do
        const FileSizeLimit limit(1000);
        QVERIFY(!(*package)->write(QByteArray(600, 'x')));
        QCOMPARE((*package)->write(QByteArray(600, 'x')), UpdateFailure::DiskFull);
        QCOMPARE((*package)->write(QByteArray(600, 'x')), UpdateFailure::DiskFull);
    }

    void aFolderThatCannotBeMadeIsReported()
    {
        const QString file = m_home.filePath(u"file"_s);
        QVERIFY(writeFile(file, {}));
        QCOMPARE(UpdatePackage::create(file + "/updates"_L1, u"a.deb"_s).error(), UpdateFailure::CannotWrite);
        QCOMPARE(UpdatePackage::create(u"/proc/self/updates"_s, u"a.deb"_s).error(), UpdateFailure::CannotWrite);
    }
};

template class RunnableTests<tst_UpdatePackage, void>;
#include "tst_updatepackage.moc"
