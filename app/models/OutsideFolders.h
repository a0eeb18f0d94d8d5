#pragma once

/// Makes the folders in the user's home that the reading library expects, where nothing is in their place yet. Whether
/// that succeeds does not matter here: the library reports what it misses.
void checkLogDir();
void checkSedicaDir();
