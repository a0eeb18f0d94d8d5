#pragma once

struct CommandLine;

/// "pelmora --save": makes the attestations that the command line asks for, without a display. The result is the
/// program's exit code.
[[nodiscard]] int runSave(const CommandLine& command, char* programName);

/// "pelmora --print": the same, printed on the default printer.
[[nodiscard]] int runPrint(const CommandLine& command, char* programName);

/// "pelmora --read": what is on the cards, as JSON.
[[nodiscard]] int runRead(const CommandLine& command, char* programName);
