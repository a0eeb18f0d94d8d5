#pragma once

#include <QString>

/// The integer that a text begins with: leading blanks and a sign are allowed, what follows the digits is ignored, a
/// text without digits is 0, and a number outside the 64-bit range is clamped to it.
[[nodiscard]] qint64 integerValue(QStringView text);
