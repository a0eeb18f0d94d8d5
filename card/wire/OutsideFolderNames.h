#pragma once

#include <QLatin1StringView>

/// Folders of an installed reading library in the user's home, where the card service may write.
namespace OutsideFolder {
inline constexpr QLatin1StringView logs{"Library/Logs/santesocial"};
inline constexpr QLatin1StringView sedica{"Library/Preferences/santesocial/sedica"};
} // namespace OutsideFolder
