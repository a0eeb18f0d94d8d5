#pragma once

/// A failed write gives an error instead of ending the program: to a pipe without a reader (SIGPIPE) or over the file
/// size limit (SIGXFSZ). Called first in main.
void ignoreSignalsOfFailedWrites();
