#include "app/CardReading.h"

#include "card/LVitAccess.h"
#include "card/PelmoraError.h"
#include "platform/MainQueue.h"

#include <optional>
#include <utility>

void bindCardService(LVitAccess& client, std::function<void(const BindOutcome&)> completion)
{
    client.bindWithCompletionHandler(
        [completion = std::move(completion)](bool bound, const std::optional<Error>& error) {
            postToMainQueue([completion, outcome = bindOutcome(bound, error)] { completion(outcome); });
        });
}

void readCard(const std::shared_ptr<LVitAccess>& client,
              const std::function<void(std::expected<CardRecord, Error>)>& completion)
{
    bindCardService(*client, [client, completion](const BindOutcome& outcome) {
        if (outcome) {
            completion(std::unexpected(*outcome));
            return;
        }
        client->readeVitaleWithCompletionHandler(
            [completion](bool, const std::optional<Error>& error, const std::optional<CardRecord>& record) {
                std::expected<CardRecord, Error> result = std::unexpected(error.value_or(PelmoraError::generalError()));
                if (record)
                    result = *record;
                postToMainQueue([completion, result = std::move(result)] { completion(result); });
            });
    });
}
