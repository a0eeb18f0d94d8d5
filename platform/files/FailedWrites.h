#pragma once

/// From now on a write that fails is an error and not the end of the program: to a pipe without a reader (SIGPIPE), or
/// beyond the size that files may have (SIGXFSZ). Called first thing in main.
void ignoreSignalsOfFailedWrites();
