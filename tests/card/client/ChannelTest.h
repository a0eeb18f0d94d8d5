#pragma once

#include "card/client/ServiceChannel.h"
#include "tests/common/LogCapture.h"
#include "tests/fakes/FakeService.h"

#include <QCborMap>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QtTest>

#include <future>
#include <memory>

/// Shared by the tests of the channel: conversations with a service as lists of events.
namespace ChannelTest {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

inline constexpr auto patience = 30s;
inline constexpr ChannelLimits hasty{.requestTimeout = 300ms, .exitGrace = 200ms};

/// The events of a channel, in order. Written on the channel's thread, and read after its end.
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

inline QCborMap request(const QString& command = u"init"_s)
{
    return {{u"Command"_s, command}};
}

/// Runs a function on the channel's thread and returns its result. Ends the test program after a time limit.
template <typename Function>
auto onChannel(ServiceChannel& channel, Function function) -> decltype(function())
{
    std::promise<decltype(function())> promise;
    auto future = promise.get_future();
    channel.post([&promise, &function] { promise.set_value(function()); });
    if (future.wait_for(patience) != std::future_status::ready)
        std::terminate(); // the task uses objects that would be destroyed
    return future.get();
}

inline ChannelEventHandler tellEvents(const StoryPointer& story)
{
    return [story](const ChannelEvent& event) {
        story->tell(event.kind == ChannelEvent::Kind::Interrupted ? u"interrupted"_s : u"unsolicited"_s);
    };
}

inline QString textOf(const std::optional<QCborMap>& reply)
{
    return reply ? reply->value("Status"_L1).toString() : u"none"_s;
}

/// Opens the connection. Returns 0, or the number of the error.
inline int openError(ServiceChannel& channel)
{
    return onChannel(channel, [&channel] {
        const auto opened = channel.open([](const ChannelEvent&) {});
        return opened ? 0 : opened.error().value();
    });
}

/// Closes the connection, and returns whether it is still open.
inline bool isOpenAfterClosing(ServiceChannel& channel)
{
    return onChannel(channel, [&channel] {
        channel.close();
        return channel.isOpen();
    });
}

/// Opens the connection and sends requests. Each reply is recorded as "number: status"; the last one ends the story.
inline bool converse(ServiceChannel& channel, const StoryPointer& story, const QStringList& commands)
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

inline bool waitForEnd(Story& story)
{
    return story.end.get_future().wait_for(patience) == std::future_status::ready;
}

/// A fake service and a channel to it.
struct Conversation
{
    explicit Conversation(const FakeScript& script = {}, ChannelLimits limits = {})
        : fake(script)
        , channel(fake.command(), limits)
    {
    }

    /// Sends requests over an open connection, or a new one, and waits for the last reply. False when something fails.
    bool ask(const QStringList& commands) { return ask(std::make_shared<Story>(), commands); }
    bool ask(const StoryPointer& story, const QStringList& commands)
    {
        return converse(channel, story, commands) && waitForEnd(*story);
    }

    /// The same, then stops the channel. Returns all events.
    QStringList events(const QStringList& commands)
    {
        const auto story = std::make_shared<Story>();
        const bool hasEnded = ask(story, commands);
        channel.stop();
        return hasEnded ? story->events : QStringList(u"no reply in time"_s);
    }

    FakeService fake;
    ServiceChannel channel;
};

} // namespace ChannelTest
