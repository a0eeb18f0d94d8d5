#include "app/desktop/RuntimeFolder.h"
#include "app/desktop/SingleInstance.h"
#include "app/models/CommandLine.h"
#include "tests/common/EventCount.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <future>
#include <vector>

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Claim = SingleInstance::Claim;

namespace {

constexpr auto longPatience = 20s;

/// A temporary runtime folder.
class Folder
{
public:
    [[nodiscard]] FileDescriptor open() const { return openPrivateFolder(m_folder.path()); }
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }
    [[nodiscard]] QStringList names() const { return namesIn(m_folder.path()); }

    /// The claim of a later start. It runs on another thread, so that the caller can process the first start's events.
    [[nodiscard]] std::future<Claim> laterStart(const std::optional<QString>& card = {},
                                                std::chrono::milliseconds patience = longPatience) const
    {
        return std::async(std::launch::async, [this, card, patience] {
            SingleInstance later(open(), u"a"_s, patience);
            return later.claim(InstanceMessage::forCard(card));
        });
    }

    /// Connects to the first start and sends these bytes, unless they are null. Invalid when that fails.
    [[nodiscard]] FileDescriptor guest(const QByteArray& message) const
    {
        FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray name = path(u"pelmora-a.socket"_s).toUtf8();
        std::ranges::copy(name, std::begin(address.sun_path));
        if (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            socket.reset();
        if (!message.isNull() &&
            send(socket.get(), message.constData(), static_cast<std::size_t>(message.size()), MSG_NOSIGNAL) < 0)
            socket.reset();
        return socket;
    }

private:
    QTemporaryDir m_folder;
};

bool isReady(const std::future<Claim>& claim)
{
    return claim.wait_for(0s) == std::future_status::ready;
}

// Waits for a later start's claim. True when it has reached the first start.
bool reachesTheFirst(std::future<Claim> later)
{
    return QTest::qWaitFor([&later] { return isReady(later); }, 20'000) && later.get() == Claim::AlreadyRunning;
}

/// Whether the other side has closed the connection without an answer.
bool isDismissed(const FileDescriptor& guest)
{
    char received = 0;
    return recv(guest.get(), &received, 1, MSG_DONTWAIT) == 0;
}

QString keyOf(const QStringList& arguments)
{
    return SingleInstance::keyFor(CommandLine::parse(QStringList{u"pelmora"_s} + arguments).value());
}

// An instance with its own folder: `auto [folder, first, claim] = First();`
struct First
{
    Folder folder;
    SingleInstance instance{folder.open(), u"a"_s};
    Claim claim = instance.claim({});
};

} // namespace

class tst_SingleInstance : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstStartIsTheInstance()
    {
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        QCOMPARE(folder.names(), (QStringList{u"pelmora-a.lock"_s, u"pelmora-a.socket"_s}));
    }

    void aLaterStartReachesTheFirst()
    {
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        first.startListening();
        const QSignalSpy reopened(&first, &SingleInstance::reopenRequested);
        const QSignalSpy opened(&first, &SingleInstance::openRequested);
        for (qsizetype start = 1; start <= 3; ++start) {
            QVERIFY(reachesTheFirst(folder.laterStart()));
            QTRY_COMPARE(reopened.size(), start);
        }
        QCOMPARE(opened.size(), 0);
    }

    void aLaterStartSendsItsCardToTheFirst()
    {
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        first.startListening();
        const QSignalSpy reopened(&first, &SingleInstance::reopenRequested);
        const QSignalSpy opened(&first, &SingleInstance::openRequested);
        QVERIFY(reachesTheFirst(folder.laterStart(u"/été/carte 1.xml"_s)));
        QTRY_COMPARE(opened.size(), 1);
        QCOMPARE(opened[0][0].toString(), u"/été/carte 1.xml"_s);
        QCOMPARE(reopened.size(), 0);
    }

    void aMessageSentBeforeListeningIsReceivedAfterwards()
    {
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        std::future<Claim> later = folder.laterStart();
        const QSignalSpy reopened(&first, &SingleInstance::reopenRequested);
        QCOMPARE(later.wait_for(50ms), std::future_status::timeout);
        first.startListening();
        QVERIFY(reachesTheFirst(std::move(later)));
        QTRY_COMPARE(reopened.size(), 1);
    }

    void ofSimultaneousStartsExactlyOneIsTheFirst()
    {
        const Folder folder;
        std::vector<std::unique_ptr<SingleInstance>> starts;
        std::vector<std::future<Claim>> claims;
        for (int start = 0; start < 8; ++start) {
            starts.push_back(std::make_unique<SingleInstance>(folder.open(), u"a"_s, 300ms));
            claims.push_back(std::async(std::launch::async, [&each = *starts.back()] { return each.claim({}); }));
        }
        int firsts = 0;
        for (std::future<Claim>& claim : claims)
            firsts += claim.get() == Claim::First ? 1 : 0;
        QCOMPARE(firsts, 1);
    }

    void aFirstStartThatDoesNotAnswerIsWaitedForBriefly()
    {
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        QElapsedTimer timer;
        timer.start();
        SingleInstance later(folder.open(), u"a"_s, 200ms);
        QCOMPARE(later.claim({}), Claim::NoAnswer);
        QVERIFY(timer.elapsed() >= 200);
        QVERIFY(timer.elapsed() < 2'000);
        QVERIFY(SingleInstance::defaultPatience <= 2s);
        QVERIFY(SingleInstance::noAnswerText().contains(u"ne répond pas"_s));
    }

    void aWaitingStartBecomesTheFirstWhenTheFirstEnds()
    {
        const Folder folder;
        auto first = std::make_unique<SingleInstance>(folder.open(), u"a"_s);
        QCOMPARE(first->claim({}), Claim::First);
        std::future<Claim> later = folder.laterStart();
        QCOMPARE(later.wait_for(50ms), std::future_status::timeout);
        first.reset();
        QCOMPARE(later.get(), Claim::First);
    }

    void filesOfAKilledInstanceDoNotPreventAStart()
    {
        // A killed instance leaves its files. Its lock is released.
        const Folder folder;
        for (const QString& name : {u"pelmora-a.lock"_s, u"pelmora-a.socket"_s})
            QVERIFY(writeFile(folder.path(name), {}));
        SingleInstance first(folder.open(), u"a"_s);
        QCOMPARE(first.claim({}), Claim::First);
        first.startListening();
        QVERIFY(reachesTheFirst(folder.laterStart()));
    }

    void startedProgramsDoNotInheritTheClaim()
    {
        const Folder folder;
        QProcess program;
        {
            SingleInstance first(folder.open(), u"a"_s);
            QCOMPARE(first.claim({}), Claim::First);
            program.start(u"sleep"_s, {u"60"_s});
            QVERIFY(program.waitForStarted());
        }
        SingleInstance next(folder.open(), u"a"_s, 0ms);
        QCOMPARE(next.claim({}), Claim::First);
        program.kill();
        program.waitForFinished();
    }

    void anotherKeyIsAnotherInstance()
    {
        const Folder folder;
        SingleInstance first(folder.open(), u"a"_s);
        SingleInstance other(folder.open(), u"b"_s);
        QCOMPARE(first.claim({}), Claim::First);
        QCOMPARE(other.claim({}), Claim::First);
    }

    void theFolderMayHaveALongName()
    {
        QTemporaryDir parent;
        const QString path = parent.filePath(QString(200, u'é').left(120));
        QVERIFY(QDir().mkpath(path));
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        SingleInstance first(openPrivateFolder(path), u"a"_s);
        QCOMPARE(first.claim({}), Claim::First);
        QVERIFY(QFile::exists(path + u"/pelmora-a.socket"_s));
    }

    void withoutARuntimeFolderEveryStartIsTheFirst()
    {
        SingleInstance first(FileDescriptor(), u"a"_s);
        SingleInstance second(FileDescriptor(), u"a"_s);
        QCOMPARE(first.claim({}), Claim::First);
        QCOMPARE(second.claim({}), Claim::First);
        first.startListening();
    }

    void malformedMessagesAreDropped_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("text") << QByteArray("bonjour");
        QTest::newRow("100,000 bytes") << QByteArray(100'000, 'a');
        QTest::newRow("empty") << QByteArray("");
    }
    void malformedMessagesAreDropped()
    {
        QFETCH(const QByteArray, message);
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        first.startListening();
        const QSignalSpy reopened(&first, &SingleInstance::reopenRequested);
        const QSignalSpy opened(&first, &SingleInstance::openRequested);
        const FileDescriptor guest = folder.guest(message);
        QVERIFY(guest.isValid());
        QTRY_VERIFY(isDismissed(guest));
        QCOMPARE(reopened.size() + opened.size(), 0);
        // The next connection is accepted.
        QVERIFY(reachesTheFirst(folder.laterStart()));
    }

    void silentClientsDoNotBlockOthers()
    {
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        first.startListening();
        std::vector<FileDescriptor> silent;
        for (int guest = 0; guest < 8; ++guest) {
            silent.push_back(folder.guest({}));
            QVERIFY(silent.back().isValid());
            QCoreApplication::processEvents();
        }
        QVERIFY(reachesTheFirst(folder.laterStart()));
        QVERIFY(isDismissed(silent.front()));
        QVERIFY(!isDismissed(silent.back()));
    }

    void withoutAFreeDescriptorALaterStartWaitsAndTheFirstIsIdle()
    {
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        first.startListening();
        const QSignalSpy opened(&first, &SingleInstance::openRequested);
        const FileDescriptor guest = folder.guest(InstanceMessage{u"/carte.xml"_s, {}}.encoded());
        QVERIFY(guest.isValid());

        const EventCount announcements(*QCoreApplication::instance(), QEvent::SockAct);
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &before), 0);
        const FileDescriptor nextFree(dup(guest.get()));
        const rlimit none{static_cast<rlim_t>(nextFree.get()), before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
        bool isOver = false;
        QTimer::singleShot(600, this, [&isOver] { isOver = true; });
        QTRY_VERIFY(isOver);
        const int announced = announcements.value();
        setrlimit(RLIMIT_NOFILE, &before);
        QVERIFY2(announced >= 1 && announced <= 4, qPrintable(QString::number(announced)));
        QVERIFY(opened.isEmpty());
        QTRY_COMPARE(opened.count(), 1);
    }

    void theClaimIsReleasedWhenTheEventLoopEnds()
    {
        auto [folder, first, claim] = First();
        QCOMPARE(claim, Claim::First);
        first.startListening();
        first.release();
        SingleInstance next(folder.open(), u"a"_s, 0ms);
        QCOMPARE(next.claim({}), Claim::First);
    }

    void theInstanceDependsOnTheDesktopAndTheCardService()
    {
        qputenv("WAYLAND_DISPLAY", "");
        qputenv("DISPLAY", ":1");
        const QString one = keyOf({});
        QCOMPARE(keyOf({u"carte.xml"_s}), one);
        QStringList keys{one, keyOf({u"--simulate"_s}), keyOf({u"--simulate=a.xml"_s}),
                         keyOf({u"--card-service"_s, u"a"_s})};
        qputenv("DISPLAY", ":1.1");
        QCOMPARE(keyOf({}), one);
        qputenv("DISPLAY", ":2");
        keys.append(keyOf({}));
        qputenv("DISPLAY", "10.0.0.1:1.0");
        keys.append(keyOf({}));
        qputenv("WAYLAND_DISPLAY", "wayland-0");
        keys.append(keyOf({}));
        QCOMPARE(keys.removeDuplicates(), 0);
    }
};

template class RunnableTests<tst_SingleInstance, QCoreApplication>;
#include "tst_singleinstance.moc"
