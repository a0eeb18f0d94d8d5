#pragma once

#include "card/CardRecord.h"
#include "card/client/BindOutcome.h"
#include "platform/Error.h"

#include <expected>
#include <functional>

class LVitAccess;
class UserDefaults;

/// Sets the client's access mode from the settings, for the next bind. Main thread.
void setAccessModeFromSettings(LVitAccess& client, const UserDefaults& settings);

/// Binds the card service. The outcome is delivered once, later, on the main thread.
void bindCardService(LVitAccess& client, std::function<void(const BindOutcome&)> completion);

/// Reads the card with a bound card service. The outcome is delivered once, later, on the main thread; before that,
/// whenAnswered is called on the client's thread.
void readCard(
    LVitAccess& client, std::function<void(const std::expected<CardRecord, Error>&)> completion,
    std::function<void()> whenAnswered = [] {});
