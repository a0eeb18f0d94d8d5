#include "tests/card/client/ChannelTest.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

#include <functional>
#include <optional>
#include <system_error>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ChannelTest;

class tst_ServiceChannelLife : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_log.clear(); }

    void closingAnswersPendingRequestsAndReportsNoEvent()
    {
        Conversation talk(FakeScript().doing("any", "silent"));
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(talk.channel, story, {u"a"_s, u"b"_s}));
        QCOMPARE(onChannel(talk.channel,
                           [&] {
                               talk.channel.close();
                               talk.channel.close();
                               return true;
                           }),
                 true);
        talk.channel.stop();
        QCOMPARE(story->events, (QStringList{u"1: none"_s, u"2: none"_s}));
    }

    void requestsWithoutAConnectionAreAnsweredAtOnce()
    {
        Conversation talk;
        const auto answer = onChannel(talk.channel, [&] {
            QString text;
            talk.channel.send(request(), [&](const std::optional<QCborMap>& reply) { text = textOf(reply); });
            return text;
        });
        QCOMPARE(answer, u"none"_s);
        QVERIFY(talk.fake.notes().isEmpty());
    }

    void numbersStartAgainOnANewConnection()
    {
        // Each connection counts from 1: on the second one, the repeated reply to "b" has the number 1.
        Conversation talk(FakeScript().doing("b", "twice"));
        QVERIFY(talk.ask({u"a"_s}));
        QVERIFY(!isOpenAfterClosing(talk.channel));
        const auto second = std::make_shared<Story>();
        QVERIFY(talk.ask(second, {u"b"_s, u"c"_s}));
        talk.channel.stop();
        QCOMPARE(second->events.size(), 2);
        QCOMPARE(m_log.lines(MXLog::Warning), QStringList{u"Card service: reply to request 1, which does not wait"_s});
        QCOMPARE(talk.fake.processes().size(), 2);
    }

    void destructionAnswersPendingRequestsAndEndsTheService()
    {
        const FakeService fake(FakeScript().doing("any", "silent"));
        const auto story = std::make_shared<Story>();
        {
            ServiceChannel channel(fake.command());
            QVERIFY(converse(channel, story, {u"a"_s, u"b"_s}));
            QTRY_COMPARE_WITH_TIMEOUT(fake.requests().size(), 2, 30'000);
        }
        QCOMPARE(story->events, (QStringList{u"1: none"_s, u"2: none"_s}));
        QCOMPARE(fake.notes().last(), u"end of input"_s);
        QVERIFY(FakeService::isReaped(fake.processes().value(0)));
    }

    void destructionKillsAServiceThatIgnoresTheEndOfItsInput()
    {
        const FakeService fake(FakeScript().ignoringTheEnd());
        const auto story = std::make_shared<Story>();
        QElapsedTimer timer;
        {
            ServiceChannel channel(fake.command(), {.exitGrace = 300ms});
            QVERIFY(converse(channel, story, {u"init"_s}));
            QVERIFY(waitForEnd(*story));
            timer.start();
        }
        QVERIFY(timer.elapsed() >= 300);
        QVERIFY(FakeService::isReaped(fake.processes().value(0)));
    }

    void destructionFromAHandlerIsPossible()
    {
        const FakeService fake;
        auto channel = std::make_unique<ServiceChannel>(fake.command());
        std::promise<QStringList> done;
        auto future = done.get_future();
        ServiceChannel& reference = *channel;
        reference.post([channel = std::move(channel), &done]() mutable {
            ServiceChannel& self = *channel;
            const auto told = std::make_shared<QStringList>();
            if (!self.open([](const ChannelEvent&) {}))
                return;
            self.send(request(), [told, &done](const std::optional<QCborMap>& reply) {
                told->append(textOf(reply));
                if (told->size() == 2)
                    done.set_value(*told);
            });
            self.send(request(u"b"_s),
                      [told, &done, channel = std::move(channel)](const std::optional<QCborMap>&) mutable {
                          told->append(u"destroyed"_s);
                          channel.reset();
                          if (told->size() == 2)
                              done.set_value(*told);
                      });
        });
        QVERIFY(future.wait_for(patience) == std::future_status::ready);
        QCOMPARE(future.get(), (QStringList{u"success"_s, u"destroyed"_s}));
        // The thread ends its service, although no caller waits for it.
        QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(fake.processes().value(0)), 30'000);
        QCOMPARE(fake.notes().last(), u"end of input"_s);
    }

    void tasksRunInOrderOnTheChannelsThread()
    {
        const FakeService fake;
        ServiceChannel channel({fake.filePath(u"absent"_s), {}});
        std::vector<std::pair<int, std::thread::id>> runs;
        for (int number = 0; number < 100; ++number)
            channel.post([&runs, number] { runs.emplace_back(number, std::this_thread::get_id()); });
        channel.stop();
        QCOMPARE(runs.size(), std::size_t{100});
        for (int number = 0; number < 100; ++number) {
            const auto& [ranNumber, thread] = runs[static_cast<std::size_t>(number)];
            QCOMPARE(ranNumber, number);
            QVERIFY(thread == runs.front().second);
            QVERIFY(thread != std::this_thread::get_id());
        }
    }

    void tasksPostedBeforeTheEndRunAndCannotConnect()
    {
        Conversation talk;
        qsizetype connections = 0;
        std::optional<std::error_code> refusal;
        bool ranLater = false;
        // Connects and posts itself again until the stop has been requested.
        const std::function<void()> connect = [&] {
            if (const auto opened = talk.channel.open([](const ChannelEvent&) {}); !opened) {
                refusal = opened.error();
                talk.channel.post([&ranLater] { ranLater = true; });
                return;
            }
            talk.channel.close();
            if (++connections < 500)
                talk.channel.post(connect);
        };
        talk.channel.post(connect);
        talk.channel.stop();
        QVERIFY(refusal == std::make_error_code(std::errc::operation_canceled));
        QCOMPARE(ranLater, true);
        // A service that had no time to start may not have recorded itself.
        QVERIFY(talk.fake.processes().size() <= connections);
    }

    void tasksPostedAfterTheEndAreDropped()
    {
        const FakeService fake;
        ServiceChannel channel({fake.filePath(u"absent"_s), {}});
        channel.stop();
        const auto held = std::make_shared<int>(1);
        channel.post([held] { qFatal("a task ran after the end"); });
        QCOMPARE(held.use_count(), 1);
    }

private:
    LogCapture m_log;
};

template class RunnableTests<tst_ServiceChannelLife, QCoreApplication>;

#include "tst_servicechannellife.moc"
