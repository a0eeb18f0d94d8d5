#pragma once

#include "card/LVitAccess.h"

struct CommandLine;
class Bundle;

/// The card service that the command line asks for: our own, with or without the simulated reader, or another program.
[[nodiscard]] ServiceCommand cardServiceCommand(const CommandLine& command, const Bundle& bundle);

/// Hands the access mode of the settings to the client: it takes effect with the next bind. Main thread.
void setAccessModeFromSettings(LVitAccess& client);
