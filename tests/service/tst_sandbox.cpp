#include "service/Sandbox.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The errno of a failed call; 0 after a success.
char errorOf(int result)
{
    return result >= 0 ? char{0} : static_cast<char>(errno);
}

/// The result of ::bind or ::connect with a local socket's address.
int callWithAddress(int (*call)(int, const sockaddr*, socklen_t), int socket, const QByteArray& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    return call(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

/// The result of a connection to a local socket.
int connectTo(const QByteArray& path)
{
    const int made = ::socket(AF_UNIX, SOCK_STREAM, 0);
    return made < 0 ? -1 : callWithAddress(::connect, made, path);
}

/// A socket that accepts connections.
class Listener
{
public:
    explicit Listener(QByteArray path)
        : m_path(std::move(path))
    {
        m_isReady = callWithAddress(::bind, m_socket, m_path) == 0 && ::listen(m_socket, 8) == 0;
    }
    Q_DISABLE_COPY_MOVE(Listener)
    ~Listener() { ::close(m_socket); }

    [[nodiscard]] const QByteArray& path() const { return m_path; }
    [[nodiscard]] bool isReady() const { return m_isReady; }
    /// The bytes that a client has sent.
    [[nodiscard]] QByteArray received() const
    {
        const int client = ::accept(m_socket, nullptr, nullptr);
        QByteArray bytes(16, '\0');
        bytes.resize(std::max(ssize_t{0}, ::read(client, bytes.data(), 16)));
        ::close(client);
        return bytes;
    }

private:
    QByteArray m_path;
    int m_socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    bool m_isReady = false;
};

/// The attempts in the sandbox, by their place in the report.
enum Attempt
{
    InternetSocket,
    Datagram,
    PcscConnection,
    SecondPcscConnection,
    OtherConnection,
    NewFile,
    NewFileInOwnFolder,
    Permissions,
    SignalToOther,
    SignalToItself,
    AttemptCount
};

struct Outcome
{
    QString obstacles;
    std::array<char, AttemptCount> errors{};
    int status = -1; // of the child
};

struct Surroundings
{
    QByteArray folder;
    QByteArray ownFolder;
    QByteArray pcscSocket;
    QByteArray otherSocket;
};

std::array<char, AttemptCount> attempts(const Surroundings& around)
{
    std::array<char, AttemptCount> errors{};
    errors[InternetSocket] = errorOf(::socket(AF_INET, SOCK_STREAM, 0));
    errors[Datagram] = errorOf(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    errors[PcscConnection] = errorOf(connectTo(around.pcscSocket));
    const int again = ::socket(AF_UNIX, SOCK_STREAM, 0);
    errors[SecondPcscConnection] = errorOf(callWithAddress(::connect, again, around.pcscSocket));
    if (errors[SecondPcscConnection] == 0)
        errors[SecondPcscConnection] = errorOf(static_cast<int>(::write(again, "hello", 5)));
    errors[OtherConnection] = errorOf(connectTo(around.otherSocket));
    errors[NewFile] = errorOf(::open((around.folder + "/new").constData(), O_WRONLY | O_CREAT, 0600));
    errors[NewFileInOwnFolder] = errorOf(::open((around.ownFolder + "/new").constData(), O_WRONLY | O_CREAT, 0600));
    errors[Permissions] = errorOf(::chmod(around.folder.constData(), 0700));
    errors[SignalToOther] = errorOf(::kill(::getppid(), 0));
    errors[SignalToItself] = errorOf(::kill(::getpid(), 0));
    return errors;
}

/// The attempts run in a child process, because the sandbox is permanent.
Outcome outcomeOf(const Surroundings& around)
{
    std::array<int, 2> pipe{-1, -1};
    if (::pipe(pipe.data()) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        bool isTold = false;
        {
            const Sandbox sandbox(
                {.writableFolders = {around.ownFolder, "/no/such/folder"}, .pcscSocket = around.pcscSocket});
            const std::array errors = attempts(around);
            const QByteArray report =
                QByteArray(errors.data(), errors.size()) + sandbox.obstacles().value_or(QString()).toUtf8();
            isTold = ::write(pipe[1], report.constData(), static_cast<std::size_t>(report.size())) == report.size();
        }
        // The sandbox's helper process has ended with the sandbox and has been reaped.
        const bool hasChild = ::waitpid(-1, nullptr, __WALL) != -1 || errno != ECHILD;
        ::_exit(isTold && !hasChild ? 0 : 1);
    }
    ::close(pipe[1]);
    QByteArray report(4096, '\0');
    report.resize(std::max(ssize_t{0}, ::read(pipe[0], report.data(), 4096)));
    ::close(pipe[0]);
    Outcome outcome;
    ::waitpid(child, &outcome.status, 0);
    if (report.size() >= AttemptCount) {
        std::copy_n(report.cbegin(), std::size_t{AttemptCount}, outcome.errors.begin());
        outcome.obstacles = QString::fromUtf8(report.sliced(AttemptCount));
    }
    return outcome;
}

} // namespace

class tst_Sandbox : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everyRestrictionNotReportedAsMissingApplies()
    {
        const QTemporaryDir folder;
        const QTemporaryDir ownFolder;
        const Listener pcsc(QFile::encodeName(folder.filePath(u"pcsc"_s)));
        const Listener other(QFile::encodeName(folder.filePath(u"other"_s)));
        QVERIFY(pcsc.isReady() && other.isReady());
        const Outcome outcome = outcomeOf({.folder = QFile::encodeName(folder.path()),
                                           .ownFolder = QFile::encodeName(ownFolder.path()),
                                           .pcscSocket = pcsc.path(),
                                           .otherSocket = other.path()});
        QCOMPARE(outcome.status, 0);
        if (!outcome.obstacles.isEmpty())
            qWarning("some restrictions cannot be tested on this system: %s", qPrintable(outcome.obstacles));
        const auto refusal = [&outcome](const QString& protection, int error) {
            return outcome.obstacles.contains(protection) ? 0 : error;
        };
        const std::array<int, AttemptCount> expected{refusal(u"Réseau"_s, EACCES),
                                                     refusal(u"Réseau"_s, EACCES),
                                                     0,
                                                     0,
                                                     refusal(u"Sockets locales"_s, EACCES),
                                                     refusal(u"Fichiers"_s, EACCES),
                                                     0,
                                                     refusal(u"Droits et dates"_s, EPERM),
                                                     refusal(u"Signaux"_s, EPERM),
                                                     0};
        for (std::size_t attempt = 0; attempt < AttemptCount; ++attempt)
            QVERIFY2(outcome.errors.at(attempt) == expected.at(attempt),
                     qPrintable(u"attempt %1 ends with %2"_s.arg(attempt).arg(int{outcome.errors.at(attempt)})));
        QCOMPARE(pcsc.received(), QByteArray()); // the first connection, which has sent nothing
        QCOMPARE(pcsc.received(), QByteArray("hello"));
    }

    void aConnectionToAMissingServiceFailsAsOutsideTheSandbox()
    {
        const QTemporaryDir folder;
        const QByteArray absent = QFile::encodeName(folder.filePath(u"absent"_s));
        const Outcome outcome = outcomeOf({.folder = {}, .ownFolder = {}, .pcscSocket = absent, .otherSocket = absent});
        QCOMPARE(int{outcome.errors[PcscConnection]}, ENOENT);
    }

    void anUnusableSocketPathIsReportedAndOtherRestrictionsApply()
    {
        const pid_t child = ::fork();
        if (child == 0) {
            const Sandbox sandbox({.writableFolders = {}, .pcscSocket = QByteArray(200, 'a')});
            const QString obstacles = sandbox.obstacles().value_or(QString());
            const bool isHeld = errorOf(::socket(AF_INET, SOCK_STREAM, 0)) == EACCES || obstacles.contains(u"Réseau"_s);
            ::_exit(obstacles.contains(u"Sockets locales ("_s) && isHeld ? 0 : 1);
        }
        int status = -1;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
    }

    void theWritableFoldersAreThoseThatTheApplicationMakes()
    {
        qputenv("HOME", "/home/specimen");
        QCOMPARE(libraryFolders(), (QList<QByteArray>{"/home/specimen/Library/Logs/santesocial",
                                                      "/home/specimen/Library/Preferences/santesocial/sedica"}));
    }
};

template class RunnableTests<tst_Sandbox, void>;
#include "tst_sandbox.moc"
