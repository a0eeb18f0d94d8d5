#include "app/models/OutsideFolders.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_OutsideFolders : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;

    static void check()
    {
        checkLogDir();
        checkSedicaDir();
    }

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        qputenv("HOME", QFile::encodeName(m_home->path()));
    }

    void bothFoldersAreMadeInTheHome()
    {
        check();
        QVERIFY(QFileInfo(m_home->filePath(u"Library/Logs/santesocial"_s)).isDir());
        QVERIFY(QFileInfo(m_home->filePath(u"Library/Preferences/santesocial/sedica"_s)).isDir());
    }

    void existingFoldersKeepTheirContent()
    {
        check();
        const QString inside = m_home->filePath(u"Library/Logs/santesocial/old.log"_s);
        QVERIFY(writeFile(inside, {}));
        check();
        QVERIFY(QFile::exists(inside));
    }

    void aFileAtTheFoldersPathIsKept()
    {
        const QString inTheWay = m_home->filePath(u"Library/Logs/santesocial"_s);
        QVERIFY(writeFile(inTheWay, {}));
        check();
        QVERIFY(QFileInfo(inTheWay).isFile());
        QVERIFY(QFileInfo(m_home->filePath(u"Library/Preferences/santesocial/sedica"_s)).isDir());
    }

    void aHomeWhereFoldersCannotBeMadeIsAccepted()
    {
        const QString file = m_home->filePath(u"file"_s);
        QVERIFY(writeFile(file, {}));
        qputenv("HOME", QFile::encodeName(file));
        check();
        QVERIFY(QFileInfo(file).isFile());
    }
};

template class RunnableTests<tst_OutsideFolders, QCoreApplication>;
#include "tst_outsidefolders.moc"
