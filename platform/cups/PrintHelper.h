#pragma once

/// The print helper's run: one PrintRequest on the standard input, one PrintAnswer on the standard output. Waits for
/// the print server, so that whoever asks may end the process at any time. The result is the program's exit code.
[[nodiscard]] int runPrintHelper();
