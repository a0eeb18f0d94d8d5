#pragma once

#include <QLatin1StringView>

/// The folders in which an installed reading library keeps its files, from the user's home: the application makes them,
/// and the card service lets the library write there.
namespace OutsideFolder {
inline constexpr QLatin1StringView logs{"Library/Logs/santesocial"};
inline constexpr QLatin1StringView sedica{"Library/Preferences/santesocial/sedica"};
} // namespace OutsideFolder
