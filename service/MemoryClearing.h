#pragma once

/// Clears what earlier calls left on the calling thread's stack: the 256 KiB below the caller's frame, which must be
/// there. What is in use is not touched.
void clearUnusedStack();
