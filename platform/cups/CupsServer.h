#pragma once

#include "platform/print/PrintMessages.h"

/// Puts a request to the CUPS server that the user prints to, and waits for the answer as long as that takes. Without a
/// server there are no queues.
[[nodiscard]] PrintAnswer askCupsServer(const PrintRequest& request);
