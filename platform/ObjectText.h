#pragma once

#include <QString>

#include <optional>

/// What a missing object becomes when it is made part of a text.
inline constexpr QStringView missingObjectText{u"(null)"};

/// The text as it goes into a longer one: itself, or the text for a missing object.
[[nodiscard]] inline QString objectText(const std::optional<QString>& object)
{
    return object ? *object : missingObjectText.toString();
}
