#pragma once

#include <QString>

#include <optional>

/// What a longer text shows for a missing object.
inline constexpr QStringView missingObjectText{u"(null)"};

[[nodiscard]] inline QString objectText(const std::optional<QString>& object)
{
    return object ? *object : missingObjectText.toString();
}
