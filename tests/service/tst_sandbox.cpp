#include "service/Sandbox.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The errno of the call that has ended so; 0 when it has gone well.
char errorOf(int descriptor)
{
    return descriptor >= 0 ? char{0} : static_cast<char>(errno);
}

/// What a process in the sandbox could do.
struct Outcome
{
    QStringList lacking;
    int internetSocket = -1;
    int localSocket = -1;
    int newFile = -1;
    int newFileInOwnFolder = -1;
};

/// Tried in a child, which alone is confined.
Outcome outcomeOf(const QByteArray& folder, const QByteArray& ownFolder)
{
    std::array<int, 2> pipe{-1, -1};
    if (::pipe(pipe.data()) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        const QStringList lacking = enterSandbox({ownFolder, "/no/such/folder"});
        const std::array results{
            errorOf(::socket(AF_INET, SOCK_STREAM, 0)),
            errorOf(::socket(AF_UNIX, SOCK_STREAM, 0)),
            errorOf(::open((folder + "/new").constData(), O_WRONLY | O_CREAT, 0600)),
            errorOf(::open((ownFolder + "/new").constData(), O_WRONLY | O_CREAT, 0600)),
        };
        const QByteArray report = QByteArray(results.data(), results.size()) + lacking.join(u'\n').toUtf8();
        ::_exit(::write(pipe[1], report.constData(), static_cast<std::size_t>(report.size())) == report.size() ? 0 : 1);
    }
    ::close(pipe[1]);
    QByteArray report(4096, '\0');
    report.resize(std::max(ssize_t{0}, ::read(pipe[0], report.data(), 4096)));
    ::close(pipe[0]);
    ::waitpid(child, nullptr, 0);
    if (report.size() < 4)
        return {};
    return {.lacking = QString::fromUtf8(report.sliced(4)).split(u'\n', Qt::SkipEmptyParts),
            .internetSocket = report[0],
            .localSocket = report[1],
            .newFile = report[2],
            .newFileInOwnFolder = report[3]};
}

bool has(const QStringList& lacking, const QString& protection)
{
    return lacking.filter(protection).isEmpty();
}

} // namespace

class TestSandbox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsNotLackingHolds()
    {
        const QTemporaryDir folder;
        const QTemporaryDir ownFolder;
        const Outcome outcome = outcomeOf(QFile::encodeName(folder.path()), QFile::encodeName(ownFolder.path()));
        QCOMPARE(outcome.internetSocket, has(outcome.lacking, u"réseau"_s) ? EACCES : 0);
        QCOMPARE(outcome.localSocket, 0);
        QCOMPARE(outcome.newFile, has(outcome.lacking, u"écriture"_s) ? EACCES : 0);
        QCOMPARE(outcome.newFileInOwnFolder, 0);
        for (const QString& sentence : outcome.lacking)
            QVERIFY2(sentence.startsWith(u"protection indisponible : "_s), qPrintable(sentence));
    }

    void theFoldersOfALibraryAreThoseThatTheApplicationMakes()
    {
        qputenv("HOME", "/home/specimen");
        QCOMPARE(libraryFolders(), (QList<QByteArray>{"/home/specimen/Library/Logs/santesocial",
                                                      "/home/specimen/Library/Preferences/santesocial/sedica"}));
    }
};

QTEST_APPLESS_MAIN(TestSandbox)
#include "tst_sandbox.moc"
