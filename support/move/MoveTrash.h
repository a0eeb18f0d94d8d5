#pragma once

#include "support/move/MoveOperations.h"

/// Moves an item to the trash; logs and returns false when both ways fail.
[[nodiscard]] bool moveToTrash(const QString& path, MoveOperations& operations);
