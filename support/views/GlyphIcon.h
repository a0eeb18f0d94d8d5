#pragma once

#include <QIcon>
#include <QString>

/// An icon from an SVG file that uses "currentColor": it is painted as vectors in the painter's pen colour. The file is
/// read at the first paint; one that cannot be drawn is logged and shows nothing. Main thread only.
[[nodiscard]] QIcon glyphIcon(const QString& path);
