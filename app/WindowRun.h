#pragma once

struct CommandLine;

/// The application with its windows, with the card that the command line asks for, until it is left. Hands over to a
/// running instance instead, where there is one. The result is the program's exit code. Main thread.
[[nodiscard]] int runWindow(const CommandLine& command, int argc, char** argv);
