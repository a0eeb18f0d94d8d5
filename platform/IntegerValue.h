#pragma once

#include <QString>

/// The integer at the start of a text. Leading blanks and a sign are allowed, text after the digits is ignored. A text
/// without digits gives 0, a number outside the 64-bit range the nearest limit.
[[nodiscard]] qint64 integerValue(QStringView text);
