#include "card/ServiceChannel.h"
#include "tests/card/ChannelTestMain.h"
#include "tests/card/FakeService.h"
#include "tests/card/LogCapture.h"

#include <QCborMap>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <future>
#include <memory>

#include <fcntl.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto patience = 30s;
constexpr ChannelLimits hasty{.requestTimeout = 300ms, .exitGrace = 200ms};

/// What happened on a channel, in its order. Written on the channel's thread, read once that is through.
struct Story
{
    QStringList events;
    std::promise<void> end;
    bool isFinished = false;

    void tell(const QString& event) { events.append(event); }
    void finish()
    {
        if (!std::exchange(isFinished, true))
            end.set_value();
    }
};
using StoryPointer = std::shared_ptr<Story>;

QCborMap request(const QString& command = u"init"_s)
{
    return {{u"Command"_s, command}};
}

/// Runs something on the channel's thread and gives its result; nullopt when that takes too long.
template <typename Function>
auto onChannel(ServiceChannel& channel, Function function) -> std::optional<decltype(function())>
{
    std::promise<decltype(function())> promise;
    auto future = promise.get_future();
    channel.post([&promise, &function] { promise.set_value(function()); });
    if (future.wait_for(patience) != std::future_status::ready)
        std::terminate(); // the task holds what is about to go
    return future.get();
}

ChannelEventHandler tellEvents(const StoryPointer& story)
{
    return [story](const ChannelEvent& event) {
        story->tell(event.kind == ChannelEvent::Kind::Interrupted ? u"interrupted"_s : u"unsolicited"_s);
    };
}

QString textOf(const std::optional<QCborMap>& reply)
{
    return reply ? reply->value("Status"_L1).toString() : u"none"_s;
}

/// Opens the connection and sends requests; each reply is told as "number: status", the last one ends the story.
std::optional<bool> converse(ServiceChannel& channel, const StoryPointer& story, const QStringList& commands)
{
    return onChannel(channel, [&channel, story, commands] {
        if (!channel.open(tellEvents(story)))
            return false;
        auto left = std::make_shared<qsizetype>(commands.size());
        for (qsizetype index = 0; index < commands.size(); ++index) {
            channel.send(request(commands[index]), [story, left, index](const std::optional<QCborMap>& reply) {
                story->tell(u"%1: %2"_s.arg(index + 1).arg(textOf(reply)));
                if (--*left == 0)
                    story->finish();
            });
        }
        return true;
    });
}

bool waitForEnd(Story& story)
{
    return story.end.get_future().wait_for(patience) == std::future_status::ready;
}

} // namespace

class TestServiceChannel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_log.clear();
    }

    void aRequestGetsItsReply();
    void repliesReachTheirRequestsInAnyOrder();
    void aReplyThatDribblesInIsWaitedFor();
    void aSlowReplyIsWaitedFor();
    void aNullBodyIsNoDictionaryAndBreaksNothing();
    void aBrokenConnectionTellsItsHandlerAndThenEveryWaitingRequest_data();
    void aBrokenConnectionTellsItsHandlerAndThenEveryWaitingRequest();
    void aHelperIsSeenToEndWithoutWaitingForATimeout_data();
    void aHelperIsSeenToEndWithoutWaitingForATimeout();
    void aRequestToAHelperThatHasJustDiedIsAnsweredAndKillsNobody();
    void theConnectionIsClosedWhenItsHandlerIsToldOfTheBreak();
    void whatAHelperAnsweredBeforeItDiedStillCounts();
    void aHelperThatEndsWhileNothingWaitsInterrupts();
    void duplicateAndUnknownRepliesAreDroppedWithAWarning();
    void unsolicitedMessagesReachTheEventHandler();
    void tasksAndTimeoutsAreServedDuringAFlood();
    void aRequestLargerThanThePipeArrivesWhole();
    void aHelperThatReadsNothingDoesNotHoldTheThread();
    void closingAnswersWhatWaitsAndTellsNoEvent();
    void requestsWithoutAConnectionAreAnsweredAtOnce();
    void numbersStartAgainOnANewConnection();
    void aHelperLeavesWhenItsInputEnds();
    void closingDoesNotWaitForAHelperThatStaysAndThatIsKilled();
    void destructionAnswersWhatWaitsAndEndsTheHelper();
    void destructionOutlastsAHelperThatIgnoresTheEndOfItsInput();
    void destructionFromAHandlerIsPossible();
    void tasksRunInOrderOnOneThreadOfTheirOwn();
    void tasksPostedBeforeTheEndAreRunAndCannotConnect();
    void tasksPostedAfterTheEndAreDropped();
    void aProgramThatCannotBeExecutedIsReportedAtOnce_data();
    void aProgramThatCannotBeExecutedIsReportedAtOnce();
    void theHelperStartsWithCleanSignalsAndThreeDescriptors();
    void theHelperCanBeStartedWithoutStandardDescriptors();
    void whatTheHelperSaysOnStandardErrorIsLoggedInBoundedLines();
    void aFloodOnStandardErrorHoldsNothingUp();

private:
    LogCapture m_log;
};

void TestServiceChannel::aRequestGetsItsReply()
{
    const FakeService fake;
    ServiceChannel channel(fake.command());
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events, QStringList{u"1: success"_s});
    QCOMPARE(fake.requests(), QStringList{uR"({"Command":"init"})"_s});
}

void TestServiceChannel::repliesReachTheirRequestsInAnyOrder()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--reverse"_s, u"3"_s, u"--set"_s, u"a"_s, u"Status"_s, u"A"_s, u"--set"_s,
                                         u"b"_s, u"Status"_s, u"B"_s, u"--set"_s, u"c"_s, u"Status"_s, u"C"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"a"_s, u"b"_s, u"c"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events, (QStringList{u"3: C"_s, u"2: B"_s, u"1: A"_s}));
}

void TestServiceChannel::aReplyThatDribblesInIsWaitedFor()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, u"in-pieces"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"vitale_read"_s, u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events, (QStringList{u"1: success"_s, u"2: success"_s}));
}

void TestServiceChannel::aSlowReplyIsWaitedFor()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, u"slow"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"init"_s, u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events, (QStringList{u"1: success"_s, u"2: success"_s}));
}

void TestServiceChannel::aNullBodyIsNoDictionaryAndBreaksNothing()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"vitale_read"_s, u"null"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"vitale_read"_s, u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events, (QStringList{u"1: none"_s, u"2: success"_s}));
}

void TestServiceChannel::aBrokenConnectionTellsItsHandlerAndThenEveryWaitingRequest_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("behaviour");
    for (const auto* const behaviour : {"garbage", "chatter", "half", "huge", "crash", "crash-midway", "exit", "silent",
                                        "close-output", "close-input", "stop-reading", "flood"})
        QTest::newRow(behaviour) << u"--do"_s << QString::fromLatin1(behaviour);
    for (const auto* const behaviour : {"garbage", "huge", "crash", "exit", "close-output", "close-input"})
        QTest::addRow("%s at start", behaviour) << u"--at-start"_s << QString::fromLatin1(behaviour);
}

void TestServiceChannel::aBrokenConnectionTellsItsHandlerAndThenEveryWaitingRequest()
{
    QFETCH(const QString, option);
    QFETCH(const QString, behaviour);
    const FakeService fake;
    const QStringList arguments =
        option == u"--do" ? QStringList{option, u"vitale_read"_s, behaviour} : QStringList{option, behaviour};
    ServiceChannel channel(fake.command(arguments), hasty);
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"vitale_read"_s, u"vitale_read"_s, u"vitale_read"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events.removeAll(u"unsolicited"_s) > 0, behaviour == u"flood");
    QCOMPARE(story->events, (QStringList{u"interrupted"_s, u"1: none"_s, u"2: none"_s, u"3: none"_s}));
    QVERIFY(std::ranges::all_of(fake.processes(), FakeService::isReaped));
}

void TestServiceChannel::aHelperIsSeenToEndWithoutWaitingForATimeout_data()
{
    QTest::addColumn<QString>("behaviour");
    for (const auto* const behaviour : {"exit", "crash", "close-output", "close-input", "die-and-leave-a-child"})
        QTest::newRow(behaviour) << QString::fromLatin1(behaviour);
}

void TestServiceChannel::aHelperIsSeenToEndWithoutWaitingForATimeout()
{
    QFETCH(const QString, behaviour);
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, behaviour}),
                           {.requestTimeout = 10min, .exitGrace = 100ms});
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"init"_s}), true);
    // Less than the life of the child that one of them leaves behind.
    QVERIFY(story->end.get_future().wait_for(10s) == std::future_status::ready);
    channel.stop();
    QCOMPARE(story->events, (QStringList{u"interrupted"_s, u"1: none"_s}));
}

void TestServiceChannel::aRequestToAHelperThatHasJustDiedIsAnsweredAndKillsNobody()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--at-start"_s, u"exit"_s}));
    std::promise<QString> replied;
    auto reply = replied.get_future();
    QCOMPARE(onChannel(channel,
                       [&] {
                           const auto opened = channel.open([](const ChannelEvent&) {});
                           // The channel looks at its helper only after this task.
                           QDeadlineTimer deadline(30'000);
                           while (!deadline.hasExpired() &&
                                  !(fake.processes().size() == 1 && FakeService::isDead(fake.processes()[0])))
                               std::this_thread::yield();
                           channel.send(request(),
                                        [&](const std::optional<QCborMap>& body) { replied.set_value(textOf(body)); });
                           return opened.has_value();
                       }),
             true);
    QVERIFY(reply.wait_for(patience) == std::future_status::ready);
    QCOMPARE(reply.get(), u"none"_s);
}

void TestServiceChannel::theConnectionIsClosedWhenItsHandlerIsToldOfTheBreak()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, u"crash"_s}));
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

void TestServiceChannel::whatAHelperAnsweredBeforeItDiedStillCounts()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, u"crash-after"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"init"_s, u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events, (QStringList{u"1: success"_s, u"interrupted"_s, u"2: none"_s}));
}

void TestServiceChannel::aHelperThatEndsWhileNothingWaitsInterrupts()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--at-start"_s, u"exit"_s}));
    std::promise<ChannelEvent::Kind> told;
    auto future = told.get_future();
    QCOMPARE(
        onChannel(
            channel,
            [&] { return channel.open([&](const ChannelEvent& event) { told.set_value(event.kind); }).has_value(); }),
        true);
    QVERIFY(future.wait_for(patience) == std::future_status::ready);
    QCOMPARE(future.get(), ChannelEvent::Kind::Interrupted);
    QCOMPARE(onChannel(channel, [&] { return channel.isOpen(); }), false);
}

void TestServiceChannel::duplicateAndUnknownRepliesAreDroppedWithAWarning()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"a"_s, u"twice"_s, u"--do"_s, u"b"_s, u"to-nobody"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"a"_s, u"b"_s, u"c"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events.size(), 3);
    QCOMPARE(m_log.lines(MXLog::Warning), (QStringList{u"Card service: reply to request 1, which does not wait"_s,
                                                       u"Card service: reply to request 4711, which does not wait"_s}));
}

void TestServiceChannel::unsolicitedMessagesReachTheEventHandler()
{
    const FakeService fake;
    ServiceChannel channel(
        fake.command({u"--do"_s, u"a"_s, u"unsolicited"_s, u"--do"_s, u"b"_s, u"unsolicited-null"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"a"_s, u"b"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events.size(), 3);
    QCOMPARE(story->events[0], u"unsolicited"_s);
}

void TestServiceChannel::tasksAndTimeoutsAreServedDuringAFlood()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"a"_s, u"flood"_s}), {.requestTimeout = 2s, .exitGrace = 200ms});
    std::promise<void> flooded;
    std::promise<bool> replied;
    auto flood = flooded.get_future();
    auto reply = replied.get_future();
    QCOMPARE(onChannel(channel,
                       [&] {
                           const auto opened = channel.open([&, count = 0](const ChannelEvent&) mutable {
                               if (++count == 10'000)
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

void TestServiceChannel::aRequestLargerThanThePipeArrivesWhole()
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

void TestServiceChannel::aHelperThatReadsNothingDoesNotHoldTheThread()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--at-start"_s, u"stop-reading"_s}), {.exitGrace = 100ms});
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
    QCOMPARE(onChannel(channel,
                       [&] {
                           channel.close();
                           return channel.isOpen();
                       }),
             false);
    QVERIFY(reply.wait_for(0s) == std::future_status::ready);
    QCOMPARE(reply.get(), false);
}

void TestServiceChannel::closingAnswersWhatWaitsAndTellsNoEvent()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, u"silent"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"a"_s, u"b"_s}), true);
    QCOMPARE(onChannel(channel,
                       [&] {
                           channel.close();
                           channel.close();
                           return true;
                       }),
             true);
    channel.stop();
    QCOMPARE(story->events, (QStringList{u"1: none"_s, u"2: none"_s}));
}

void TestServiceChannel::requestsWithoutAConnectionAreAnsweredAtOnce()
{
    const FakeService fake;
    ServiceChannel channel(fake.command());
    const auto answer = onChannel(channel, [&] {
        QString text;
        channel.send(request(), [&](const std::optional<QCborMap>& reply) { text = textOf(reply); });
        return text;
    });
    QCOMPARE(answer, u"none"_s);
    QVERIFY(fake.notes().isEmpty());
}

void TestServiceChannel::numbersStartAgainOnANewConnection()
{
    // The second service drops replies to the numbers of the first: each connection counts from 1.
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"b"_s, u"twice"_s}));
    const auto first = std::make_shared<Story>();
    QCOMPARE(converse(channel, first, {u"a"_s}), true);
    QVERIFY(waitForEnd(*first));
    QCOMPARE(onChannel(channel,
                       [&] {
                           channel.close();
                           return channel.isOpen();
                       }),
             false);
    const auto second = std::make_shared<Story>();
    QCOMPARE(converse(channel, second, {u"b"_s, u"c"_s}), true);
    QVERIFY(waitForEnd(*second));
    channel.stop();
    QCOMPARE(second->events.size(), 2);
    QCOMPARE(m_log.lines(MXLog::Warning), QStringList{u"Card service: reply to request 1, which does not wait"_s});
    QCOMPARE(fake.processes().size(), 2);
}

void TestServiceChannel::aHelperLeavesWhenItsInputEnds()
{
    const FakeService fake;
    ServiceChannel channel(fake.command());
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(fake.notes().last(), u"end of input"_s);
    QCOMPARE(fake.processes().size(), 1);
    QVERIFY(FakeService::isReaped(fake.processes()[0]));
}

void TestServiceChannel::closingDoesNotWaitForAHelperThatStaysAndThatIsKilled()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--ignore-end"_s}), {.exitGrace = 1s});
    const auto first = std::make_shared<Story>();
    QCOMPARE(converse(channel, first, {u"init"_s}), true);
    QVERIFY(waitForEnd(*first));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(onChannel(channel,
                       [&] {
                           channel.close();
                           return channel.isOpen();
                       }),
             false);
    const auto second = std::make_shared<Story>();
    QCOMPARE(converse(channel, second, {u"init"_s}), true);
    QVERIFY(waitForEnd(*second));
    const pid_t leaving = fake.processes().value(0);
    const bool stayedMeanwhile = !FakeService::isDead(leaving);
    const bool wasWithinTheGrace = timer.elapsed() < 1000;
    QVERIFY(stayedMeanwhile || !wasWithinTheGrace);
    QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(leaving), 30'000);
    QVERIFY(timer.elapsed() >= 1000);
    QVERIFY(!FakeService::isDead(fake.processes().value(1)));
}

void TestServiceChannel::destructionAnswersWhatWaitsAndEndsTheHelper()
{
    const FakeService fake;
    const auto story = std::make_shared<Story>();
    {
        ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, u"silent"_s}));
        QCOMPARE(converse(channel, story, {u"a"_s, u"b"_s}), true);
        QTRY_COMPARE_WITH_TIMEOUT(fake.requests().size(), 2, 30'000);
    }
    QCOMPARE(story->events, (QStringList{u"1: none"_s, u"2: none"_s}));
    QCOMPARE(fake.notes().last(), u"end of input"_s);
    QVERIFY(FakeService::isReaped(fake.processes().value(0)));
}

void TestServiceChannel::destructionOutlastsAHelperThatIgnoresTheEndOfItsInput()
{
    const FakeService fake;
    const auto story = std::make_shared<Story>();
    QElapsedTimer timer;
    {
        ServiceChannel channel(fake.command({u"--ignore-end"_s}), {.exitGrace = 300ms});
        QCOMPARE(converse(channel, story, {u"init"_s}), true);
        QVERIFY(waitForEnd(*story));
        timer.start();
    }
    QVERIFY(timer.elapsed() >= 300);
    QVERIFY(FakeService::isReaped(fake.processes().value(0)));
}

void TestServiceChannel::destructionFromAHandlerIsPossible()
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
        self.send(request(u"b"_s), [told, &done, channel = std::move(channel)](const std::optional<QCborMap>&) mutable {
            told->append(u"destroyed"_s);
            channel.reset();
            if (told->size() == 2)
                done.set_value(*told);
        });
    });
    QVERIFY(future.wait_for(patience) == std::future_status::ready);
    QCOMPARE(future.get(), (QStringList{u"success"_s, u"destroyed"_s}));
    // Nobody waits for the thread, which sees its helper off nevertheless.
    QTRY_VERIFY_WITH_TIMEOUT(FakeService::isReaped(fake.processes().value(0)), 30'000);
    QCOMPARE(fake.notes().last(), u"end of input"_s);
}

void TestServiceChannel::tasksRunInOrderOnOneThreadOfTheirOwn()
{
    ServiceChannel channel({u"/nonexistent"_s, {}});
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

void TestServiceChannel::tasksPostedBeforeTheEndAreRunAndCannotConnect()
{
    const FakeService fake;
    ServiceChannel channel(fake.command());
    std::promise<void> gate;
    std::shared_future<void> opened = gate.get_future().share();
    std::optional<std::error_code> refusal;
    bool ranLater = false;
    channel.post([opened] { opened.wait(); });
    channel.post([&] {
        const auto result = channel.open([](const ChannelEvent&) {});
        if (!result)
            refusal = result.error();
        channel.post([&] { ranLater = true; });
    });
    const auto stopping = std::async(std::launch::async, [&] { channel.stop(); });
    // Time for the stop to be asked for; what is checked below holds without it as well.
    stopping.wait_for(100ms);
    gate.set_value();
    stopping.wait();
    QCOMPARE(ranLater, true);
    QVERIFY(fake.processes().isEmpty() == refusal.has_value());
}

void TestServiceChannel::tasksPostedAfterTheEndAreDropped()
{
    ServiceChannel channel({u"/nonexistent"_s, {}});
    channel.stop();
    const auto held = std::make_shared<int>(1);
    channel.post([held] { qFatal("a task ran after the end"); });
    QCOMPARE(held.use_count(), 1);
}

void TestServiceChannel::aProgramThatCannotBeExecutedIsReportedAtOnce_data()
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

void TestServiceChannel::aProgramThatCannotBeExecutedIsReportedAtOnce()
{
    QFETCH(const QString, kind);
    QFETCH(const int, error);
    const FakeService fake;
    const QString path = kind.isEmpty() ? QString() : fake.filePath(kind);
    if (kind == u"folder")
        QVERIFY(QDir().mkdir(path));
    if (kind == u"plain" || kind == u"text" || kind == u"script") {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(kind == u"script" ? "#!/nonexistent/interpreter\n" : "just text\n");
        file.close();
        const auto executable = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
        QVERIFY(file.setPermissions(kind == u"plain" ? QFile::ReadOwner | QFile::WriteOwner : executable));
    }
    ServiceChannel channel({path, {}});
    const auto result = onChannel(channel, [&] {
        const auto opened = channel.open([](const ChannelEvent&) {});
        return opened ? 0 : opened.error().value();
    });
    QCOMPARE(result, error);
}

void TestServiceChannel::theHelperStartsWithCleanSignalsAndThreeDescriptors()
{
    const FakeService fake;
    // What the application blocks, ignores and has open is not passed on.
    const FileDescriptor inheritable(::open("/dev/null", O_RDONLY));
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    ServiceChannel channel(fake.command());
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    const QString folder = u"/proc/%1"_s.arg(fake.processes().value(0));
    QFile status(folder + u"/status"_s);
    QVERIFY(status.open(QIODevice::ReadOnly));
    const QByteArray content = status.readAll();
    const QStringList descriptors = QDir(folder + u"/fd"_s).entryList(QDir::Files | QDir::System);
    channel.stop();
    std::signal(SIGPIPE, previous);
    QVERIFY2(content.contains("SigBlk:\t0000000000000000"), content.constData());
    QVERIFY2(content.contains("SigIgn:\t0000000000000000"), content.constData());
    // 3 is the record that this service keeps.
    QCOMPARE(descriptors, (QStringList{u"0"_s, u"1"_s, u"2"_s, u"3"_s}));
}

void TestServiceChannel::theHelperCanBeStartedWithoutStandardDescriptors()
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

void TestServiceChannel::whatTheHelperSaysOnStandardErrorIsLoggedInBoundedLines()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, u"chatter-on-errors"_s}));
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    channel.stop();
    QCOMPARE(story->events, QStringList{u"1: success"_s});
    QCOMPARE(m_log.lines(MXLog::Notice),
             (QStringList{u"Card service: Lecteur branché"_s, u"Card service: ligne?[31m rouge"_s,
                          u"Card service: "_s + QString(1024, u'x') + u"..."_s, u"Card service: sans fin de ligne"_s}));
}

void TestServiceChannel::aFloodOnStandardErrorHoldsNothingUp()
{
    const FakeService fake;
    ServiceChannel channel(fake.command({u"--do"_s, u"any"_s, u"flood-on-errors"_s}), hasty);
    const auto story = std::make_shared<Story>();
    QCOMPARE(converse(channel, story, {u"init"_s}), true);
    QVERIFY(waitForEnd(*story));
    QCOMPARE(onChannel(channel, [] { return 1; }), 1);
    channel.stop();
    QCOMPARE(story->events, QStringList{u"1: success"_s});
    QVERIFY(FakeService::isReaped(fake.processes().value(0)));
}

int main(int argc, char* argv[])
{
    return runChannelTest<TestServiceChannel>(argc, argv);
}

#include "tst_servicechannel.moc"
