#pragma once

#include "support/move/MoveOperations.h"

/// Moves an item to the trash, by the first way that succeeds. False, and a line in the log, when none does.
[[nodiscard]] bool moveToTrash(const QString& path, MoveOperations& operations);
