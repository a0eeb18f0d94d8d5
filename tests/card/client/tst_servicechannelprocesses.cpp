#include "tests/card/client/ChannelTest.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

#include <csignal>

#include <fcntl.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ChannelTest;

class tst_ServiceChannelProcesses : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_log.clear(); }

    void aServiceExitsWhenItsInputEnds()
    {
        Conversation talk;
        QVERIFY(talk.ask({u"init"_s}));
        talk.channel.stop();
        QCOMPARE(talk.fake.notes().last(), u"end of input"_s);
        QCOMPARE(talk.fake.processes().size(), 1);
        QVERIFY(FakeService::isReaped(talk.fake.processes()[0]));
    }

    void aClosedServiceThatIgnoresTheEndOfItsInputIsKilled()
    {
        Conversation talk(FakeScript().ignoringTheEnd(), {.exitGrace = 1s});
        QVERIFY(talk.ask({u"init"_s}));
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!isOpenAfterClosing(talk.channel));
        QVERIFY(talk.ask({u"init"_s}));
        QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(talk.fake.processes().value(0)), 30'000);
        QVERIFY(timer.elapsed() >= 1000);
        QVERIFY(!FakeService::isDead(talk.fake.processes().value(1)));
    }

    void closingDoesNotWaitForAServiceThatMustBeKilledAndStoppingKillsIt()
    {
        // At the stop, the first service has been told to exit, and the second one has not.
        Conversation talk(FakeScript().ignoringTheEnd(), {.exitGrace = 10min, .stopGrace = 300ms});
        QVERIFY(talk.ask({u"init"_s}));
        QVERIFY(!isOpenAfterClosing(talk.channel));
        QVERIFY(talk.ask({u"init"_s}));
        QVERIFY(!FakeService::isDead(talk.fake.processes().value(0)));
        QElapsedTimer timer;
        timer.start();
        talk.channel.stop();
        QVERIFY(timer.elapsed() >= 300);
        QCOMPARE(talk.fake.processes().size(), 2);
        QVERIFY(FakeService::isReaped(talk.fake.processes()[0]));
        QVERIFY(FakeService::isReaped(talk.fake.processes()[1]));
    }

    void aProgramThatCannotBeExecutedIsReportedAtOnce_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("error");
        QTest::newRow("absent") << u"absent"_s << ENOENT;
        QTest::newRow("no name") << u""_s << ENOENT;
        QTest::newRow("a folder") << u"folder"_s << EACCES;
        QTest::newRow("not executable") << u"plain"_s << EACCES;
        QTest::newRow("not a program") << u"text"_s << ENOEXEC;
        QTest::newRow("interpreter absent") << u"script"_s << ENOENT;
    }

    void aProgramThatCannotBeExecutedIsReportedAtOnce()
    {
        QFETCH(const QString, kind);
        QFETCH(const int, error);
        const FakeService fake;
        const QString path = kind.isEmpty() ? QString() : fake.filePath(kind);
        if (kind == u"folder")
            QVERIFY(QDir().mkdir(path));
        if (kind == u"plain" || kind == u"text" || kind == u"script") {
            const QByteArray interpreter = QFile::encodeName(fake.filePath(u"interpreter"_s));
            QVERIFY(writeFile(path, kind == u"script" ? "#!" + interpreter + '\n' : "just text\n"_ba));
            const auto executable = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
            QVERIFY(QFile::setPermissions(path, kind == u"plain" ? QFile::ReadOwner | QFile::WriteOwner : executable));
        }
        ServiceChannel channel({path, {}});
        QCOMPARE(openError(channel), error);
    }

    void theServiceStartsWithCleanSignalsAndThreeDescriptors()
    {
        const FakeService fake;
        // Blocked and ignored signals and open descriptors are not inherited.
        const FileDescriptor inheritable(::open("/dev/null", O_RDONLY));
        const auto previous = std::signal(SIGPIPE, SIG_IGN);
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"init"_s}));
        QVERIFY(waitForEnd(*story));
        const QString folder = u"/proc/%1"_s.arg(fake.processes().value(0));
        const QByteArray content = contentOf(folder + u"/status"_s);
        const QStringList descriptors = QDir(folder + u"/fd"_s).entryList(QDir::Files | QDir::System);
        channel.stop();
        std::signal(SIGPIPE, previous);
        QVERIFY2(content.contains("SigBlk:\t0000000000000000"), content.constData());
        QVERIFY2(content.contains("SigIgn:\t0000000000000000"), content.constData());
        // Descriptor 3 is this service's own record.
        QCOMPARE(descriptors, (QStringList{u"0"_s, u"1"_s, u"2"_s, u"3"_s}));
    }

    void theServiceCanBeStartedWithoutStandardDescriptors()
    {
        const FakeService fake;
        const FileDescriptor input(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 10));
        const FileDescriptor errors(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 10));
        ServiceChannel channel(fake.command());
        ::close(STDIN_FILENO);
        ::close(STDERR_FILENO);
        const auto story = std::make_shared<Story>();
        const auto opened = converse(channel, story, {u"init"_s});
        const bool hasEnded = waitForEnd(*story);
        channel.stop();
        dup2(input.get(), STDIN_FILENO);
        dup2(errors.get(), STDERR_FILENO);
        QCOMPARE(opened, true);
        QVERIFY(hasEnded);
        QCOMPARE(story->events, QStringList{u"1: success"_s});
    }

    void standardErrorIsLoggedAtDebugLevelInBoundedLines()
    {
        Conversation talk(FakeScript().doing("any", "chatter-on-errors"));
        QCOMPARE(talk.events({u"init"_s}), QStringList{u"1: success"_s});
        QCOMPARE(m_log.lines(), (QStringList{u"Card service: Lecteur branché"_s, u"Card service: ligne?[31m rouge"_s,
                                             u"Card service: "_s + QString(1024, u'x') + u"..."_s,
                                             u"Card service: sans fin de ligne"_s}));
        QCOMPARE(said(), m_log.lines());
    }

    void standardErrorIsNotLoggedByDefault()
    {
        Conversation talk(FakeScript().doing("any", "chatter-on-errors"));
        const auto story = std::make_shared<Story>();
        MXLog::defaultLogger().setLogLevel(MXLog::Notice);
        QVERIFY(converse(talk.channel, story, {u"init"_s}));
        const bool hasEnded = waitForEnd(*story);
        talk.channel.stop();
        MXLog::defaultLogger().setLogLevel(MXLog::Debug);
        QVERIFY(hasEnded);
        QCOMPARE(m_log.lines(), QStringList());
    }

    void theLastOutputOfAServiceIsReadAndABoundedPartLogged_data()
    {
        QTest::addColumn<QString>("behaviour");
        for (const auto* const behaviour : {"last-words", "last-words-and-leave-a-child"})
            QTest::newRow(behaviour) << QString::fromLatin1(behaviour);
    }

    void theLastOutputOfAServiceIsReadAndABoundedPartLogged()
    {
        QFETCH(const QString, behaviour);
        Conversation talk(FakeScript().doing("any", behaviour));
        QCOMPARE(talk.events({u"init"_s}), (QStringList{u"interrupted"_s, u"1: none"_s}));
        QStringList expected(200, u"Card service: une ligne de quarante-neuf lettres, ou presque..."_s);
        expected.append(u"Card service: 801 more lines left out"_s);
        QCOMPARE(said(), expected);
    }

    void aChildThatKeepsWritingDoesNotDelayTheEndOfTheService()
    {
        Conversation talk(FakeScript().doing("any", "die-and-leave-a-noisy-child"), {.exitGrace = 10min});
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(talk.channel, story, {u"init"_s}));
        // Shorter than the child's life.
        QTRY_VERIFY_WITH_TIMEOUT(!talk.fake.processes().isEmpty() && FakeService::isReaped(talk.fake.processes()[0]),
                                 10'000);
    }

    void aFloodOnStandardErrorBlocksNothingAndItsLogIsBounded()
    {
        Conversation talk(FakeScript().doing("any", "flood-on-errors"), {.exitGrace = 200ms});
        const auto story = std::make_shared<Story>();
        QVERIFY(talk.ask(story, {u"init"_s}));
        QTRY_VERIFY_WITH_TIMEOUT(said().size() == 200, 30'000);
        QCOMPARE(onChannel(talk.channel, [] { return 1; }), 1);
        talk.channel.stop();
        QCOMPARE(story->events, QStringList{u"1: success"_s});
        QVERIFY(FakeService::isReaped(talk.fake.processes().value(0)));
        // On a slow machine the lines may be of several periods.
        QVERIFY2(said().size() < 1000, qPrintable(QString::number(said().size())));
        const QRegularExpression leftOut(u"^Card service: (\\d+) more lines left out$"_s);
        QVERIFY(leftOut.match(said().constLast()).captured(1).toLongLong() > 1000);
    }

    void howAProcessEndedIsLoggedByDefault_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::addColumn<QString>("logged");
        QTest::newRow("fault in memory") << u"segfault"_s << u"The card service ended: signal 11 (SIGSEGV)"_s;
        QTest::newRow("kill") << u"crash"_s << u"The card service ended: signal 9 (SIGKILL)"_s;
        QTest::newRow("exit") << u"exit"_s << u"The card service ended: exit status 0"_s;
        QTest::newRow("exit with 3") << u"exit-with-3"_s << u"The card service ended: exit status 3"_s;
        QTest::newRow("bad arguments") << u"absent"_s << u"The card service ended: exit status 2"_s;
    }

    void howAProcessEndedIsLoggedByDefault()
    {
        QFETCH(const QString, behaviour);
        QFETCH(const QString, logged);
        Conversation talk(FakeScript().doing("any", behaviour));
        QVERIFY(talk.ask({u"init"_s}));
        talk.channel.stop();
        QCOMPARE(m_log.lines(MXLog::Warning), QStringList{logged});
    }

    void aServiceThatExitsOnRequestIsNotLogged()
    {
        Conversation talk;
        QVERIFY(talk.ask({u"init"_s}));
        QVERIFY(!isOpenAfterClosing(talk.channel));
        talk.channel.stop();
        QVERIFY(FakeService::isReaped(talk.fake.processes().value(0)));
        QCOMPARE(m_log.lines(), QStringList());
    }

    void aKilledServiceIsLoggedAsKilled()
    {
        Conversation talk(FakeScript().ignoringTheEnd(), {.exitGrace = 100ms});
        QVERIFY(talk.ask({u"init"_s}));
        talk.channel.stop();
        QCOMPARE(m_log.lines(),
                 QStringList{u"The card service ended: signal 9 (SIGKILL), as it had not left by itself"_s});
    }

private:
    /// The logged lines of the services' standard error.
    [[nodiscard]] QStringList said() const { return m_log.lines(MXLog::Debug).filter(u"Card service: "_s); }

    LogCapture m_log;
};

template class RunnableTests<tst_ServiceChannelProcesses, QCoreApplication>;

#include "tst_servicechannelprocesses.moc"
