#include "app/models/CardReading.h"

#include "card/PelmoraError.h"
#include "card/client/LVitAccess.h"
#include "platform/MainQueue.h"
#include "prefs/settings/MVSettings.h"

#include <algorithm>
#include <climits>
#include <optional>
#include <utility>

void setAccessModeFromSettings(LVitAccess& client)
{
    // Whatever a hand-written setting holds stays what it is for the client: one of its modes, or not.
    const qint64 mode = std::clamp<qint64>(MVSettings::integerPreferencesForKey(SettingsKey::lvitMode), 0, INT_MAX);
    client.setAccessMode(static_cast<unsigned>(mode));
}

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
        if (!outcome) {
            completion(std::unexpected(outcome.error()));
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
