#include "support/MXLog.h"
#include "support/MXUtils.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <string>
#include <vector>

using namespace Qt::StringLiterals;

class tst_MXUtils : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    std::vector<std::string> m_lines;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        MXLog::defaultLogger().setLineWriter([this](MXLog::Level level, std::string_view line) {
            m_lines.push_back(std::to_string(level) + ' ' + std::string(line));
        });
        QFile file(m_folder.filePath(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    void init() { m_lines.clear(); }

    void anExistingFolderIsUsable()
    {
        QVERIFY(MXUtils::checkFolderAtPath(m_folder.path(), false));
        QVERIFY(MXUtils::checkFolderAtPath(m_folder.path(), true));
    }

    void aPlainFileIsNoFolderAndIsLeftAlone()
    {
        QVERIFY(!MXUtils::checkFolderAtPath(m_folder.filePath(u"file"_s), true));
        QVERIFY(QFile::exists(m_folder.filePath(u"file"_s)));
        QVERIFY(m_lines.empty());
    }

    void aMissingFolderIsMadeOnlyWhenAsked()
    {
        const QString path = m_folder.filePath(u"é/b c/d"_s);
        QVERIFY(!MXUtils::checkFolderAtPath(path, false));
        QVERIFY(!QDir(path).exists());
        QVERIFY(MXUtils::checkFolderAtPath(path, true));
        QVERIFY(QDir(path).exists());
    }

    void aFolderThatCannotBeMadeIsLogged()
    {
        const QString path = m_folder.filePath(u"file/below"_s);
        QVERIFY(!MXUtils::checkFolderAtPath(path, true));
        QCOMPARE(m_lines,
                 std::vector<std::string>{"2 Error on folder create '" + path.toStdString() + "' : Not a directory"});
    }

    void theTildeIsACharacterLikeAnyOther()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        const bool made = MXUtils::checkFolderAtPath(u"~/x"_s, true);
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(made);
        QVERIFY(QDir(m_folder.filePath(u"~/x"_s)).exists());
    }
};

QTEST_GUILESS_MAIN(tst_MXUtils)
#include "tst_mxutils.moc"
