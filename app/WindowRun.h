#pragma once

struct CommandLine;

/// Runs the application with its windows, or passes the request to a running instance. Gives the exit code. Main
/// thread.
[[nodiscard]] int runWindow(const CommandLine& command, int argc, char** argv);
