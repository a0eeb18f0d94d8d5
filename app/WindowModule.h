#pragma once

struct CommandLine;

/// The one function of the module that holds all that a window needs: runWindow(), under a name that a loader can ask
/// for. Program and module are built together, so they agree on what a command line is.
extern "C" int pelmoraRunWindow(const CommandLine& command, int argc, char** argv);
