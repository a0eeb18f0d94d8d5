#pragma once

#include <QString>

/// Quotes the text as one word of a shell command.
[[nodiscard]] QString quotedForShell(QString text);
