#include "app/models/CardServiceRequests.h"

#include "card/PelmoraError.h"
#include "card/client/LVitAccess.h"
#include "platform/MainQueue.h"
#include "prefs/settings/MVSettings.h"

#include <algorithm>
#include <climits>
#include <optional>
#include <utility>

void setAccessModeFromSettings(LVitAccess& client, const UserDefaults& settings)
{
    // A setting written by hand may be any number; the client maps unknown modes to 0.
    const qint64 mode =
        std::clamp<qint64>(MVSettings::integerPreferencesForKey(settings, Settings::lvitMode), 0, INT_MAX);
    client.setAccessMode(static_cast<unsigned>(mode));
}

void bindCardService(LVitAccess& client, std::function<void(const BindOutcome&)> completion)
{
    client.bindWithCompletionHandler(
        [completion = std::move(completion)](bool bound, const std::optional<Error>& error) {
            postToMainQueue([completion, outcome = bindOutcome(bound, error)] { completion(outcome); });
        });
}

void readCard(LVitAccess& client, std::function<void(const std::expected<CardRecord, Error>&)> completion,
              std::function<void()> whenAnswered)
{
    client.readeVitaleWithCompletionHandler(
        [completion = std::move(completion), whenAnswered = std::move(whenAnswered)](
            bool, const std::optional<Error>& error, const std::optional<CardRecord>& record) {
            std::expected<CardRecord, Error> outcome = std::unexpected(error.value_or(PelmoraError::generalError()));
            if (record)
                outcome = *record;
            whenAnswered();
            postToMainQueue([completion, outcome = std::move(outcome)] { completion(outcome); });
        });
}
