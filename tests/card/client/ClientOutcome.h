#pragma once

#include "card/client/LVitAccess.h"

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>

/// The values that a handler of the client received, and its thread. A second call ends the test program.
template <typename Result>
struct Outcome
{
    bool success = false;
    std::optional<Error> error;
    std::optional<Result> result;
    std::thread::id thread;
};

struct NoResult
{
};

/// A future outcome.
template <typename Result>
class Expected
{
public:
    /// Waits half a minute at most for the outcome; no value when it has not come.
    [[nodiscard]] std::optional<Outcome<Result>> wait()
    {
        if (m_future.wait_for(std::chrono::seconds(30)) != std::future_status::ready)
            return std::nullopt;
        return m_future.get();
    }
    [[nodiscard]] bool isThere() const
    {
        return m_future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

    /// A handler that sets this outcome.
    [[nodiscard]] auto handler()
    {
        return [promise = m_promise](bool success, std::optional<Error> error,
                                     std::optional<Result> result = std::nullopt) {
            promise->set_value({success, std::move(error), std::move(result), std::this_thread::get_id()});
        };
    }
    [[nodiscard]] auto plainHandler()
    {
        return [handler = handler()](bool success, std::optional<Error> error) { handler(success, std::move(error)); };
    }

private:
    using Promise = std::promise<Outcome<Result>>;
    std::shared_ptr<Promise> m_promise = std::make_shared<Promise>();
    std::future<Outcome<Result>> m_future = m_promise->get_future();
};

namespace ClientOutcome {

using ClientPointer = std::shared_ptr<LVitAccess>;

inline Expected<NoResult> beginBind(const ClientPointer& client)
{
    Expected<NoResult> outcome;
    client->bindWithCompletionHandler(outcome.plainHandler());
    return outcome;
}

inline Expected<QVariantMap> beginReaders(const ClientPointer& client)
{
    Expected<QVariantMap> outcome;
    client->getReadersWithCompletionHandler(outcome.handler());
    return outcome;
}

inline Expected<NoResult> beginSetReaders(const ClientPointer& client, const std::optional<QVariantMap>& readers)
{
    Expected<NoResult> outcome;
    client->setReadersWithCompletionHandler(readers, outcome.plainHandler());
    return outcome;
}

inline Expected<QVariantMap> beginInformations(const ClientPointer& client)
{
    Expected<QVariantMap> outcome;
    client->getInformationsWithCompletionHandler(outcome.handler());
    return outcome;
}

inline Expected<CardRecord> beginRead(const ClientPointer& client)
{
    Expected<CardRecord> outcome;
    client->readeVitaleWithCompletionHandler(outcome.handler());
    return outcome;
}

inline std::optional<Outcome<NoResult>> awaitBind(const ClientPointer& client)
{
    return beginBind(client).wait();
}

inline std::optional<Outcome<QVariantMap>> awaitReaders(const ClientPointer& client)
{
    return beginReaders(client).wait();
}

inline std::optional<Outcome<NoResult>> awaitSetReaders(const ClientPointer& client,
                                                        const std::optional<QVariantMap>& readers)
{
    return beginSetReaders(client, readers).wait();
}

inline std::optional<Outcome<QVariantMap>> awaitInformations(const ClientPointer& client)
{
    return beginInformations(client).wait();
}

inline std::optional<Outcome<CardRecord>> awaitRead(const ClientPointer& client)
{
    return beginRead(client).wait();
}

/// The outcome in a word: "success", the error's domain and code, "failure" without an error, or "none".
template <typename Result>
QString summary(const std::optional<Outcome<Result>>& outcome)
{
    if (!outcome)
        return QStringLiteral("none");
    if (!outcome->error)
        return outcome->success ? QStringLiteral("success") : QStringLiteral("failure");
    if (outcome->success)
        return QStringLiteral("success with an error");
    return outcome->error->domain() + u' ' + QString::number(outcome->error->code());
}

} // namespace ClientOutcome
