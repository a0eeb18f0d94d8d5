#pragma once

#include <QString>

#include <optional>

/// Display form of a social-security number: its 15 characters in groups of 1, 2, 2, 2, 3, 3 and 2. Anything else is
/// given back unchanged, with its spaces; an absent number is an empty text.
[[nodiscard]] QString formatNSS(const std::optional<QString>& number);
