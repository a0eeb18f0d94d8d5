#pragma once

#include <QIcon>

/// The icon of an SVG file in the sizes that desktops use. Main thread.
[[nodiscard]] QIcon windowIconFrom(const QString& path);
