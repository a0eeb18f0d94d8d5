#pragma once

#include <QIcon>

/// The icon of an SVG file, drawn in the sizes that desktops show. Main thread.
[[nodiscard]] QIcon windowIconFrom(const QString& path);
