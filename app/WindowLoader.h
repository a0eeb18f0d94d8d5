#pragma once

struct CommandLine;

/// Runs the application with its windows: loads the module that has them, from the program's own tree. The result is
/// the program's exit code. Main thread.
[[nodiscard]] int loadAndRunWindow(const CommandLine& command, int argc, char** argv);
