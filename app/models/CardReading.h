#pragma once

#include "card/CardRecord.h"
#include "card/client/BindOutcome.h"
#include "platform/Error.h"

#include <expected>
#include <functional>
#include <memory>

class LVitAccess;

/// Hands the access mode of the settings to the client: it takes effect with the next bind. Main thread.
void setAccessModeFromSettings(LVitAccess& client);

/// Brings the card service up. The outcome is handed over once, later, on the main thread.
void bindCardService(LVitAccess& client, std::function<void(const BindOutcome&)> completion);

/// Reads the card in the reader: brings the card service up, then asks it for the card. The outcome is handed over
/// once, later, on the main thread.
void readCard(const std::shared_ptr<LVitAccess>& client,
              const std::function<void(std::expected<CardRecord, Error>)>& completion);
