#pragma once

#include <QIcon>
#include <QString>

/// An icon from an SVG file drawn in "currentColor": it is painted as text is, in the painter's pen, as vectors at any
/// size and ratio. The file is read when the icon is first painted; one that cannot be drawn is logged and shows
/// nothing. Main thread only.
[[nodiscard]] QIcon glyphIcon(const QString& path);
