#pragma once

/// Clears the 256 KiB below the caller's stack frame, where earlier calls left data. They must be part of the stack.
void clearUnusedStack();
