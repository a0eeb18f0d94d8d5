#pragma once

struct CommandLine;

/// "pelmora --save": makes the attestations that the command line asks for, without a display. The result is the
/// program's exit code.
[[nodiscard]] int runSave(const CommandLine& command, char* programName);

/// "pelmora --print": the same, printed on the default printer.
[[nodiscard]] int runPrint(const CommandLine& command, char* programName);

/// The window, with the card that the command line asks for, until it is closed. The result is the program's exit code.
[[nodiscard]] int runWindow(const CommandLine& command, int argc, char** argv);
