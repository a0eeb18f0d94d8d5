#pragma once

#include <QString>

/// The text as one word of a shell command, whatever it holds.
[[nodiscard]] QString quotedForShell(QString text);
