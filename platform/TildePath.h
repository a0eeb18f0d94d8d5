#pragma once

#include <QString>

/// Replaces a leading "~" or "~/" by the user's home folder.
[[nodiscard]] QString expandingTildeInPath(const QString& path);
