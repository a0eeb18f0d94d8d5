#include "tests/card/client/ChannelTest.h"
#include "tests/common/TestCase.h"

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

    void byDefaultAReplyMayTakeAMinuteAndLeavingTwoSeconds()
    {
        QVERIFY(ChannelLimits{}.requestTimeout == 60s);
        QVERIFY(ChannelLimits{}.exitGrace == 2s);
        QVERIFY(ChannelLimits{}.stopGrace == 1s);
    }

    void aRequestGetsItsReply()
    {
        const FakeService fake;
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"init"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QCOMPARE(story->events, QStringList{u"1: success"_s});
        QCOMPARE(fake.requests(), QStringList{uR"({"Command":"init"})"_s});
    }

    void repliesReachTheirRequestsInAnyOrder()
    {
        const FakeService fake(
            FakeScript().reversing(3).text("a", "Status", "A").text("b", "Status", "B").text("c", "Status", "C"));
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"a"_s, u"b"_s, u"c"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QCOMPARE(story->events, (QStringList{u"3: C"_s, u"2: B"_s, u"1: A"_s}));
    }

    void aReplyThatDribblesInIsWaitedFor()
    {
        const FakeService fake(FakeScript().doing("any", "in-pieces"));
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"vitale_read"_s, u"init"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QCOMPARE(story->events, (QStringList{u"1: success"_s, u"2: success"_s}));
    }

    void aSlowReplyIsWaitedFor()
    {
        const FakeService fake(FakeScript().doing("any", "slow"));
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"init"_s, u"init"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QCOMPARE(story->events, (QStringList{u"1: success"_s, u"2: success"_s}));
    }

    void aNullBodyIsNoDictionaryAndBreaksNothing()
    {
        const FakeService fake(FakeScript().doing("vitale_read", "null"));
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"vitale_read"_s, u"init"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QCOMPARE(story->events, (QStringList{u"1: none"_s, u"2: success"_s}));
    }

    void aBrokenConnectionTellsItsHandlerAndThenEveryWaitingRequest_data()
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

    void aBrokenConnectionTellsItsHandlerAndThenEveryWaitingRequest()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const bool, isSeenByTimeout);
        const FakeService fake(script);
        ServiceChannel channel(fake.command(), isSeenByTimeout ? hasty : ChannelLimits{.exitGrace = 200ms});
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"vitale_read"_s, u"vitale_read"_s, u"vitale_read"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        // The flood may come too late for a message of it to arrive.
        QVERIFY(story->events.removeAll(u"unsolicited"_s) == 0 ||
                QLatin1StringView(QTest::currentDataTag()) == "flood"_L1);
        QCOMPARE(story->events, (QStringList{u"interrupted"_s, u"1: none"_s, u"2: none"_s, u"3: none"_s}));
        QVERIFY(std::ranges::all_of(fake.processes(), FakeService::isReaped));
    }

    void aServiceIsSeenToEndWithoutWaitingForATimeout_data()
    {
        QTest::addColumn<QString>("behaviour");
        for (const auto* const behaviour : {"exit", "crash", "close-output", "close-input", "die-and-leave-a-child"})
            QTest::newRow(behaviour) << QString::fromLatin1(behaviour);
    }

    void aServiceIsSeenToEndWithoutWaitingForATimeout()
    {
        QFETCH(const QString, behaviour);
        const FakeService fake(FakeScript().doing("any", behaviour));
        ServiceChannel channel(fake.command(), {.requestTimeout = 10min, .exitGrace = 100ms});
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"init"_s}));
        // Less than the life of the child that one of them leaves behind.
        QVERIFY(story->end.get_future().wait_for(10s) == std::future_status::ready);
        channel.stop();
        QCOMPARE(story->events, (QStringList{u"interrupted"_s, u"1: none"_s}));
    }

    void aRequestToAServiceThatHasJustDiedIsAnsweredAndKillsNobody()
    {
        const FakeService fake(FakeScript().startingWith("exit"));
        ServiceChannel channel(fake.command());
        std::promise<QString> replied;
        auto reply = replied.get_future();
        QCOMPARE(onChannel(channel,
                           [&] {
                               const auto opened = channel.open([](const ChannelEvent&) {});
                               // The channel looks at its service only after this task.
                               QDeadlineTimer deadline(30'000);
                               while (!deadline.hasExpired() &&
                                      !(fake.processes().size() == 1 && FakeService::isDead(fake.processes()[0])))
                                   std::this_thread::yield();
                               channel.send(request(), [&](const std::optional<QCborMap>& body) {
                                   replied.set_value(textOf(body));
                               });
                               return opened.has_value();
                           }),
                 true);
        QVERIFY(reply.wait_for(patience) == std::future_status::ready);
        QCOMPARE(reply.get(), u"none"_s);
    }

    void theConnectionIsClosedWhenItsHandlerIsToldOfTheBreak()
    {
        const FakeService fake(FakeScript().doing("any", "crash"));
        ServiceChannel channel(fake.command());
        std::promise<QString> told;
        auto future = told.get_future();
        QCOMPARE(onChannel(channel,
                           [&] {
                               const auto opened = channel.open([&](const ChannelEvent&) {
                                   told.set_value(channel.isOpen() ? u"open"_s : u"closed"_s);
                               });
                               channel.send(request(), [](const std::optional<QCborMap>&) {});
                               return opened.has_value() && channel.isOpen();
                           }),
                 true);
        QVERIFY(future.wait_for(patience) == std::future_status::ready);
        QCOMPARE(future.get(), u"closed"_s);
    }

    void whatAServiceAnsweredBeforeItDiedStillCounts()
    {
        const FakeService fake(FakeScript().doing("any", "crash-after"));
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"init"_s, u"init"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QCOMPARE(story->events, (QStringList{u"1: success"_s, u"interrupted"_s, u"2: none"_s}));
    }

    void aServiceThatEndsWhileNothingWaitsInterrupts()
    {
        const FakeService fake(FakeScript().startingWith("exit"));
        ServiceChannel channel(fake.command());
        std::promise<ChannelEvent::Kind> told;
        auto future = told.get_future();
        QCOMPARE(
            onChannel(
                channel,
                [&] {
                    return channel.open([&](const ChannelEvent& event) { told.set_value(event.kind); }).has_value();
                }),
            true);
        QVERIFY(future.wait_for(patience) == std::future_status::ready);
        QCOMPARE(future.get(), ChannelEvent::Kind::Interrupted);
        QCOMPARE(onChannel(channel, [&] { return channel.isOpen(); }), false);
    }

    void duplicateAndUnknownRepliesAreDroppedWithAWarning()
    {
        const FakeService fake(FakeScript().doing("a", "twice").doing("b", "to-nobody"));
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"a"_s, u"b"_s, u"c"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QCOMPARE(story->events.size(), 3);
        QCOMPARE(m_log.lines(MXLog::Warning),
                 (QStringList{u"Card service: reply to request 1, which does not wait"_s,
                              u"Card service: reply to request 4711, which does not wait"_s}));
    }

    void repliesToNobodyFillNoLog()
    {
        const FakeService fake(FakeScript().doing("any", "to-nobody-often"));
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"init"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QStringList expected(10, u"Card service: reply to request 4711, which does not wait"_s);
        expected.append(u"Card service: 99990 more lines left out"_s);
        QCOMPARE(m_log.lines(MXLog::Warning), expected);
    }

    void unsolicitedMessagesReachTheEventHandler()
    {
        const FakeService fake(FakeScript().doing("a", "unsolicited").doing("b", "unsolicited-null"));
        ServiceChannel channel(fake.command());
        const auto story = std::make_shared<Story>();
        QVERIFY(converse(channel, story, {u"a"_s, u"b"_s}));
        QVERIFY(waitForEnd(*story));
        channel.stop();
        QCOMPARE(story->events.size(), 3);
        QCOMPARE(story->events[0], u"unsolicited"_s);
    }

    void tasksAndTimeoutsAreServedDuringAFlood()
    {
        const FakeService fake(FakeScript().doing("a", "flood"));
        ServiceChannel channel(fake.command(), {.requestTimeout = 2s, .exitGrace = 200ms});
        std::promise<void> flooded;
        std::promise<bool> replied;
        auto flood = flooded.get_future();
        auto reply = replied.get_future();
        QCOMPARE(onChannel(channel,
                           [&] {
                               const auto opened = channel.open([&, count = 0](const ChannelEvent&) mutable {
                                   if (++count == 1000)
                                       flooded.set_value();
                               });
                               channel.send(request(u"a"_s), [&](const std::optional<QCborMap>& body) {
                                   replied.set_value(body.has_value());
                               });
                               return opened.has_value();
                           }),
                 true);
        QVERIFY(flood.wait_for(patience) == std::future_status::ready);
        QCOMPARE(onChannel(channel, [] { return 1; }), 1);
        QVERIFY(reply.wait_for(patience) == std::future_status::ready);
        QCOMPARE(reply.get(), false);
    }

    void aRequestLargerThanThePipeArrivesWhole()
    {
        const FakeService fake;
        ServiceChannel channel(fake.command());
        std::promise<bool> replied;
        auto reply = replied.get_future();
        QCOMPARE(onChannel(channel,
                           [&] {
                               const auto opened = channel.open([](const ChannelEvent&) {});
                               QCborMap large = request();
                               large.insert(u"Padding"_s, QString(1'000'000, u'x'));
                               channel.send(large, [&](const std::optional<QCborMap>& body) {
                                   replied.set_value(body.has_value());
                               });
                               return opened.has_value();
                           }),
                 true);
        QVERIFY(reply.wait_for(patience) == std::future_status::ready);
        QCOMPARE(reply.get(), true);
        QCOMPARE(fake.requested(u"Padding"_s), QStringList{QString(1'000'000, u'x')});
    }

    void aServiceThatReadsNothingDoesNotHoldTheThread()
    {
        const FakeService fake(FakeScript().startingWith("stop-reading"));
        ServiceChannel channel(fake.command(), {.exitGrace = 100ms});
        std::promise<bool> replied;
        auto reply = replied.get_future();
        QCOMPARE(onChannel(channel,
                           [&] {
                               const auto opened = channel.open([](const ChannelEvent&) {});
                               QCborMap large = request();
                               large.insert(u"Padding"_s, QString(1'000'000, u'x'));
                               channel.send(large, [&](const std::optional<QCborMap>& body) {
                                   replied.set_value(body.has_value());
                               });
                               return opened.has_value();
                           }),
                 true);
        QVERIFY(!isOpenAfterClosing(channel));
        QVERIFY(reply.wait_for(0s) == std::future_status::ready);
        QCOMPARE(reply.get(), false);
    }

private:
    LogCapture m_log;
};

int main(int argc, char** argv)
{
    return runChannelTest<tst_ServiceChannel>(argc, argv);
}

#include "tst_servicechannel.moc"
