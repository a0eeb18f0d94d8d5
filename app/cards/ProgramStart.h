#pragma once

#include "app/models/CommandLine.h"

/// What the programs with patients' data do first: sets the process up, and reads its arguments. The failure is the
/// exit code, once what is wrong with them has been told.
[[nodiscard]] std::expected<CommandLine, int> startProgram(int argc, char** argv);

/// Tells what is wrong with the arguments; the result is the exit code.
[[nodiscard]] int refuseArguments(const QString& problem);
