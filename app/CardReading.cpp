#include "app/CardReading.h"

#include "card/LVitAccess.h"
#include "card/PelmoraError.h"
#include "platform/MainQueue.h"

#include <optional>
#include <utility>

namespace {

using Completion = std::function<void(std::expected<CardRecord, Error>)>;

// On the channel's thread.
void hand(const Completion& completion, std::expected<CardRecord, Error> outcome)
{
    postToMainQueue([completion, outcome = std::move(outcome)] { completion(outcome); });
}

} // namespace

void readCard(const std::shared_ptr<LVitAccess>& client, const Completion& completion)
{
    client->bindWithCompletionHandler([client, completion](bool bound, const std::optional<Error>& bindError) {
        if (!bound) {
            hand(completion, std::unexpected(bindError.value_or(PelmoraError::generalError())));
            return;
        }
        client->readeVitaleWithCompletionHandler(
            [completion](bool read, const std::optional<Error>& readError, std::optional<CardRecord> record) {
                if (read && record)
                    hand(completion, *std::move(record));
                else
                    hand(completion, std::unexpected(readError.value_or(PelmoraError::generalError())));
            });
    });
}
