#pragma once

#include <QString>

/// The path with a leading "~" or "~/" replaced by the user's home folder; any other path as it is.
[[nodiscard]] QString expandingTildeInPath(const QString& path);
