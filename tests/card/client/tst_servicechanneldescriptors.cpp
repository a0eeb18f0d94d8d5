#include "card/client/LVitAccess.h"
#include "tests/card/client/ChannelTest.h"
#include "tests/card/client/ClientOutcome.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

#include <cerrno>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ChannelTest;

namespace {

/// During its life, the process cannot open a descriptor of that number or above. Open descriptors stay open.
class DescriptorLimit
{
public:
    explicit DescriptorLimit(int firstRefused)
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit limit{static_cast<rlim_t>(firstRefused), m_before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &m_before); }
    Q_DISABLE_COPY_MOVE(DescriptorLimit)

private:
    rlimit m_before{};
};

/// The number of the next descriptor.
int nextDescriptor()
{
    return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)).get();
}

int openDescriptors()
{
    return static_cast<int>(QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size());
}

/// How long a thread of this process has run or waited for a processor. This grows constantly for a busy loop, also
/// when the machine is busy.
std::chrono::nanoseconds runnableTime(pid_t thread)
{
    QFile file(u"/proc/self/task/%1/schedstat"_s.arg(thread));
    const QByteArrayList fields = file.open(QIODevice::ReadOnly) ? file.readAll().split(' ') : QByteArrayList();
    return std::chrono::nanoseconds(fields.value(0).toLongLong() + fields.value(1).toLongLong());
}

} // namespace

/// The channel when the process cannot open more descriptors.
class tst_ServiceChannelDescriptors : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void afterAnyRefusedDescriptorNoDescriptorIsLeftOpen()
    {
        const FakeService fake;
        int error = EMFILE;
        int refusals = 0;
        // Some numbers may already be in use.
        for (int allowed = 0; allowed < 64 && error != 0; ++allowed) {
            const int before = openDescriptors();
            {
                ServiceChannel channel(fake.command());
                const int next = nextDescriptor();
                {
                    const DescriptorLimit limit(next + allowed);
                    error = openError(channel);
                }
                QVERIFY(error == EMFILE || error == 0);
                QCOMPARE(onChannel(channel, [&channel] { return channel.isOpen(); }), error == 0);
                refusals += error == 0 ? 0 : 1;
                // With free descriptors, the same channel works.
                const auto story = std::make_shared<Story>();
                QVERIFY(converse(channel, story, {u"init"_s}));
                QVERIFY(waitForEnd(*story));
                QCOMPARE(story->events, QStringList{u"1: success"_s});
            }
            QCOMPARE(openDescriptors(), before);
        }
        QCOMPARE(error, 0);
        // Four pipes and the channel's own counter were refused, each at least once.
        QVERIFY2(refusals >= 9, qPrintable(QString::number(refusals)));
        QVERIFY(std::ranges::all_of(fake.processes(), FakeService::isReaped));
    }

    void aClientMadeWithoutFreeDescriptorsWorksOnceSomeAreFree()
    {
        const FakeService fake;
        std::shared_ptr<LVitAccess> client;
        QString bound;
        QString wasRead;
        {
            const DescriptorLimit limit(nextDescriptor());
            client = std::make_shared<LVitAccess>(fake.command());
            bound = ClientOutcome::summary(ClientOutcome::awaitBind(client));
            wasRead = ClientOutcome::summary(ClientOutcome::awaitRead(client));
        }
        QCOMPARE(bound, u"failure"_s);
        QCOMPARE(wasRead, u"Pelmora -10"_s);
        QCOMPARE(ClientOutcome::summary(ClientOutcome::awaitBind(client)), u"success"_s);
    }

    void aConnectionThatCannotBePolledIsClosedWithoutABusyLoop()
    {
        Conversation talk(FakeScript().doing("vitale_read", "silent"), {.requestTimeout = 10min, .exitGrace = 1500ms});
        QVERIFY(talk.ask({u"init"_s}));
        const pid_t process = talk.fake.processes().value(0);
        const auto story = std::make_shared<Story>();
        bool hasEnded = false;
        bool isReaped = false;
        const pid_t thread = onChannel(talk.channel, [] { return ::gettid(); });
        const auto before = runnableTime(thread);
        QVERIFY(before > 0ns);
        {
            // poll() fails when the limit is below the number of polled descriptors.
            const DescriptorLimit limit(2);
            talk.channel.post([&talk, story] {
                talk.channel.send(request(u"vitale_read"_s), [story](const std::optional<QCborMap>& reply) {
                    story->tell(textOf(reply));
                    story->finish();
                });
            });
            hasEnded = waitForEnd(*story);
            isReaped = QTest::qWaitFor([process] { return FakeService::isReaped(process); }, 30'000);
        }
        QVERIFY(hasEnded);
        QCOMPARE(story->events, QStringList{u"none"_s});
        QVERIFY(isReaped);
        const auto busy = runnableTime(thread) - before;
        QVERIFY2(busy < 1s, qPrintable(QString::number(busy.count())));
        // The channel still works.
        const auto last = std::make_shared<Story>();
        QVERIFY(talk.ask(last, {u"init"_s}));
        QCOMPARE(last->events, QStringList{u"1: success"_s});
    }
};

template class RunnableTests<tst_ServiceChannelDescriptors, QCoreApplication>;

#include "tst_servicechanneldescriptors.moc"
