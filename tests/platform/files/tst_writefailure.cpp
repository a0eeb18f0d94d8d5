#include "platform/files/WriteFailure.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTemporaryDir>
#include <QTest>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace {

std::filesystem::path pathOf(const QString& path)
{
    return path.toStdString();
}

} // namespace

class tst_WriteFailure : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private Q_SLOTS:
    void failuresThatUsersCanResolveHaveTheirOwnTexts_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<WriteObstacle>("obstacle");
        QTest::addColumn<QString>("reason");
        QTest::newRow("full") << ENOSPC << WriteObstacle::DiskFull << u"il n’y a plus de place sur le disque"_s;
        QTest::newRow("quota") << EDQUOT << WriteObstacle::QuotaReached
                               << u"la place qui vous est accordée sur le disque est épuisée"_s;
        QTest::newRow("no access") << EACCES << WriteObstacle::NotAllowed << u"l’écriture n’y est pas autorisée"_s;
        QTest::newRow("no right") << EPERM << WriteObstacle::NotAllowed << u"l’écriture n’y est pas autorisée"_s;
        QTest::newRow("read-only") << EROFS << WriteObstacle::ReadOnly << u"le disque est en lecture seule"_s;
        QTest::newRow("long name") << ENAMETOOLONG << WriteObstacle::NameRefused
                                   << u"ce disque n’accepte pas ce nom de fichier"_s;
        QTest::newRow("strange name") << EILSEQ << WriteObstacle::NameRefused
                                      << u"ce disque n’accepte pas ce nom de fichier"_s;
        QTest::newRow("other") << EIO << WriteObstacle::Other << u"l’écriture a échoué (Input/output error)"_s;
    }

    void failuresThatUsersCanResolveHaveTheirOwnTexts()
    {
        QFETCH(const int, error);
        const WriteFailure failure =
            writeFailureOf(pathOf(m_folder.filePath(u"file"_s)), std::error_code(error, std::system_category()));
        QTEST(failure.obstacle, "obstacle");
        QTEST(failure.reason, "reason");
    }

    void aFolderAtTheFilesPathIsReportedForAnySystemError()
    {
        const WriteFailure failure =
            writeFailureOf(pathOf(m_folder.path()), std::make_error_code(std::errc::file_exists));
        QCOMPARE(failure.obstacle, WriteObstacle::NameTaken);
        QCOMPARE(failure.reason, u"un dossier porte déjà ce nom"_s);
    }

    void aMissingFolderIsReportedForAnySystemError()
    {
        const WriteFailure failure = writeFailureOf(pathOf(m_folder.filePath(u"absent/file"_s)),
                                                    std::make_error_code(std::errc::no_such_file_or_directory));
        QCOMPARE(failure.obstacle, WriteObstacle::NoFolder);
        QCOMPARE(failure.reason, u"le dossier n’existe pas"_s);
    }
};

template class RunnableTests<tst_WriteFailure, void>;
#include "tst_writefailure.moc"
