#include "tests/card/client/ChannelTest.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>

#include <fcntl.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ChannelTest;

class tst_ServiceChannel : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_log.clear(); }

    void theDefaultLimitsAreAMinuteForAReplyAndTwoSecondsToExit()
    {
        QVERIFY(ChannelLimits{}.requestTimeout == 60s);
        QVERIFY(ChannelLimits{}.exitGrace == 2s);
        QVERIFY(ChannelLimits{}.stopGrace == 1s);
    }

    void aRequestGetsItsReply()
    {
        Conversation talk;
        QCOMPARE(talk.events({u"init"_s}), QStringList{u"1: success"_s});
        QCOMPARE(talk.fake.requests(), QStringList{uR"({"Command":"init"})"_s});
    }

    void requestsGetTheirReplies_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<QStringList>("commands");
        QTest::addColumn<QStringList>("events");
        const QStringList succeeding{u"1: success"_s, u"2: success"_s};
        QTest::newRow("in any order")
            << FakeScript().reversing(3).text("a", "Status", "A").text("b", "Status", "B").text("c", "Status", "C")
            << QStringList{u"a"_s, u"b"_s, u"c"_s} << QStringList{u"3: C"_s, u"2: B"_s, u"1: A"_s};
        QTest::newRow("one that comes in pieces")
            << FakeScript().doing("any", "in-pieces") << QStringList{u"vitale_read"_s, u"init"_s} << succeeding;
        QTest::newRow("slow ones") << FakeScript().doing("any", "slow") << QStringList{u"init"_s, u"init"_s}
                                   << succeeding;
        QTest::newRow("a null body, which is no dictionary and breaks nothing")
            << FakeScript().doing("vitale_read", "null") << QStringList{u"vitale_read"_s, u"init"_s}
            << QStringList{u"1: none"_s, u"2: success"_s};
        QTest::newRow("one from before the service died")
            << FakeScript().doing("any", "crash-after") << QStringList{u"init"_s, u"init"_s}
            << QStringList{u"1: success"_s, u"interrupted"_s, u"2: none"_s};
    }
    void requestsGetTheirReplies()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const QStringList, commands);
        Conversation talk(script);
        QTEST(talk.events(commands), "events");
    }

    void aBreakIsReportedToTheHandlerThenToEveryPendingRequest_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<bool>("isSeenByTimeout");
        for (const auto* const behaviour :
             {"garbage", "chatter", "huge", "crash", "crash-midway", "exit", "close-output", "close-input"})
            QTest::newRow(behaviour) << FakeScript().doing("vitale_read", behaviour) << false;
        for (const auto* const behaviour : {"half", "silent", "stop-reading", "flood"})
            QTest::newRow(behaviour) << FakeScript().doing("vitale_read", behaviour) << true;
        for (const auto* const behaviour : {"garbage", "huge", "crash", "exit", "close-output", "close-input"})
            QTest::addRow("%s at start", behaviour) << FakeScript().startingWith(behaviour) << false;
    }

    void aBreakIsReportedToTheHandlerThenToEveryPendingRequest()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const bool, isSeenByTimeout);
        Conversation talk(script, isSeenByTimeout ? hasty : ChannelLimits{.exitGrace = 200ms});
        const auto story = std::make_shared<Story>();
        QVERIFY(talk.ask(story, {u"vitale_read"_s, u"vitale_read"_s, u"vitale_read"_s}));
        talk.channel.stop();
        // The flood may start too late for one of its messages to arrive.
        QVERIFY(story->events.removeAll(u"unsolicited"_s) == 0 ||
                QLatin1StringView(QTest::currentDataTag()) == "flood"_L1);
        QCOMPARE(story->events, (QStringList{u"interrupted"_s, u"1: none"_s, u"2: none"_s, u"3: none"_s}));
        QVERIFY(std::ranges::all_of(talk.fake.processes(), FakeService::isReaped));
    }

    void theEndOfAServiceIsNoticedWithoutATimeout_data()
    {
        QTest::addColumn<QString>("behaviour");
        for (const auto* const behaviour : {"exit", "crash", "close-output", "close-input", "die-and-leave-a-child"})
            QTest::newRow(behaviour) << QString::fromLatin1(behaviour);
    }

    void theEndOfAServiceIsNoticedWithoutATimeout()
    {
        QFETCH(const QString, behaviour);
        Conversation talk(FakeScript().doing("any", behaviour), {.requestTimeout = 10min, .exitGrace = 100ms});
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(talk.channel, story, {u"init"_s}));
        // Shorter than the life of the child process that one of the services leaves running.
        QVERIFY(story->end.get_future().wait_for(10s) == std::future_status::ready);
        talk.channel.stop();
        QCOMPARE(story->events, (QStringList{u"interrupted"_s, u"1: none"_s}));
    }

    void aRequestToAServiceThatHasExitedIsAnswered()
    {
        Conversation talk(FakeScript().startingWith("exit"));
        std::promise<QString> replied;
        auto reply = replied.get_future();
        const bool isOpen = onChannel(talk.channel, [&] {
            const auto opened = talk.channel.open([](const ChannelEvent&) {});
            // The channel polls its service only after this task.
            QDeadlineTimer deadline(30'000);
            while (!deadline.hasExpired() &&
                   !(talk.fake.processes().size() == 1 && FakeService::isDead(talk.fake.processes()[0])))
                std::this_thread::yield();
            talk.channel.send(request(), [&](const std::optional<QCborMap>& body) { replied.set_value(textOf(body)); });
            return opened.has_value();
        });
        QVERIFY(isOpen);
        QVERIFY(reply.wait_for(patience) == std::future_status::ready);
        QCOMPARE(reply.get(), u"none"_s);
    }

    void theConnectionIsClosedBeforeItsHandlerIsCalled()
    {
        Conversation talk(FakeScript().doing("any", "crash"));
        std::promise<QString> told;
        auto future = told.get_future();
        const bool isOpen = onChannel(talk.channel, [&] {
            const auto opened = talk.channel.open(
                [&](const ChannelEvent&) { told.set_value(talk.channel.isOpen() ? u"open"_s : u"closed"_s); });
            talk.channel.send(request(), [](const std::optional<QCborMap>&) {});
            return opened.has_value() && talk.channel.isOpen();
        });
        QVERIFY(isOpen);
        QVERIFY(future.wait_for(patience) == std::future_status::ready);
        QCOMPARE(future.get(), u"closed"_s);
    }

    void aServiceThatEndsWithoutPendingRequestsIsAnInterruption()
    {
        Conversation talk(FakeScript().startingWith("exit"));
        std::promise<ChannelEvent::Kind> told;
        auto future = told.get_future();
        const bool isOpen = onChannel(talk.channel, [&] {
            return talk.channel.open([&](const ChannelEvent& event) { told.set_value(event.kind); }).has_value();
        });
        QVERIFY(isOpen);
        QVERIFY(future.wait_for(patience) == std::future_status::ready);
        QCOMPARE(future.get(), ChannelEvent::Kind::Interrupted);
        QVERIFY(!onChannel(talk.channel, [&] { return talk.channel.isOpen(); }));
    }

    void duplicateAndUnknownRepliesAreDroppedWithAWarning()
    {
        Conversation talk(FakeScript().doing("a", "twice").doing("b", "unknown-reply"));
        const auto story = std::make_shared<Story>();
        QVERIFY(talk.ask(story, {u"a"_s, u"b"_s, u"c"_s}));
        talk.channel.stop();
        QCOMPARE(story->events.size(), 3);
        QCOMPARE(m_log.lines(MXLog::Warning),
                 (QStringList{u"Card service: reply to request 1, which does not wait"_s,
                              u"Card service: reply to request 4711, which does not wait"_s}));
    }

    void theLogOfManyUnknownRepliesIsBounded()
    {
        Conversation talk(FakeScript().doing("any", "unknown-reply-often"));
        QVERIFY(talk.ask({u"init"_s}));
        talk.channel.stop();
        QStringList expected(10, u"Card service: reply to request 4711, which does not wait"_s);
        expected.append(u"Card service: 99990 more lines left out"_s);
        QCOMPARE(m_log.lines(MXLog::Warning), expected);
    }

    void unsolicitedMessagesReachTheEventHandler()
    {
        Conversation talk(FakeScript().doing("a", "unsolicited").doing("b", "unsolicited-null"));
        const auto story = std::make_shared<Story>();
        QVERIFY(talk.ask(story, {u"a"_s, u"b"_s}));
        talk.channel.stop();
        QCOMPARE(story->events.size(), 3);
        QCOMPARE(story->events[0], u"unsolicited"_s);
    }

    void tasksAndTimeoutsAreServedDuringAFlood()
    {
        Conversation talk(FakeScript().doing("a", "flood"), {.requestTimeout = 2s, .exitGrace = 200ms});
        std::promise<void> flooded;
        std::promise<bool> replied;
        auto flood = flooded.get_future();
        auto reply = replied.get_future();
        const bool isOpen = onChannel(talk.channel, [&] {
            const auto opened = talk.channel.open([&, count = 0](const ChannelEvent&) mutable {
                if (++count == 1000)
                    flooded.set_value();
            });
            talk.channel.send(request(u"a"_s),
                              [&](const std::optional<QCborMap>& body) { replied.set_value(body.has_value()); });
            return opened.has_value();
        });
        QVERIFY(isOpen);
        QVERIFY(flood.wait_for(patience) == std::future_status::ready);
        QCOMPARE(onChannel(talk.channel, [] { return 1; }), 1);
        QVERIFY(reply.wait_for(patience) == std::future_status::ready);
        QCOMPARE(reply.get(), false);
    }

    void aRequestLargerThanThePipeArrivesCompletely()
    {
        Conversation talk;
        std::promise<bool> replied;
        auto reply = replied.get_future();
        QVERIFY(sendLarge(talk.channel, replied));
        QVERIFY(reply.wait_for(patience) == std::future_status::ready);
        QCOMPARE(reply.get(), true);
        QCOMPARE(talk.fake.requested(u"Padding"_s), QStringList{QString(1'000'000, u'x')});
    }

    void aServiceThatReadsNothingDoesNotBlockTheThread()
    {
        Conversation talk(FakeScript().startingWith("stop-reading"), {.exitGrace = 100ms});
        std::promise<bool> replied;
        auto reply = replied.get_future();
        QVERIFY(sendLarge(talk.channel, replied));
        QVERIFY(!isOpenAfterClosing(talk.channel));
        QVERIFY(reply.wait_for(0s) == std::future_status::ready);
        QCOMPARE(reply.get(), false);
    }

private:
    /// Sends a request that is larger than a pipe. The promise is set to whether it got a reply.
    static bool sendLarge(ServiceChannel& channel, std::promise<bool>& replied)
    {
        return onChannel(channel, [&] {
            const auto opened = channel.open([](const ChannelEvent&) {});
            QCborMap large = request();
            large.insert(u"Padding"_s, QString(1'000'000, u'x'));
            channel.send(large, [&](const std::optional<QCborMap>& body) { replied.set_value(body.has_value()); });
            return opened.has_value();
        });
    }

    LogCapture m_log;
};

template class RunnableTests<tst_ServiceChannel, QCoreApplication>;

#include "tst_servicechannel.moc"
