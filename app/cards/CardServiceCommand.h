#pragma once

#include "card/client/LVitAccess.h"

struct CommandLine;
class Bundle;

/// The card service that the command line asks for: our own, with or without the simulated reader, or another program.
[[nodiscard]] ServiceCommand cardServiceCommand(const CommandLine& command, const Bundle& bundle);
