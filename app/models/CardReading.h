#pragma once

#include "card/CardRecord.h"
#include "card/client/BindOutcome.h"
#include "platform/Error.h"

#include <expected>
#include <functional>

class LVitAccess;
class UserDefaults;

/// Hands the access mode of the settings to the client: it takes effect with the next bind. Main thread.
void setAccessModeFromSettings(LVitAccess& client, const UserDefaults& settings);

/// Brings the card service up. The outcome is handed over once, later, on the main thread.
void bindCardService(LVitAccess& client, std::function<void(const BindOutcome&)> completion);

/// Asks a card service that is bound for the card in the reader. The outcome is handed over once, later, on the main
/// thread; before that, as soon as it is there, whenAnswered is called on the client's thread.
void readCard(
    LVitAccess& client, std::function<void(const std::expected<CardRecord, Error>&)> completion,
    std::function<void()> whenAnswered = [] {});
