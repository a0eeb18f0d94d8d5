#pragma once

#include <QLatin1StringView>
#include <QStringView>

// What the application and the program for updates agree on.

/// Settings: when the feed was last asked, and the version that the user does not want to hear of.
inline constexpr QLatin1StringView lastCheckTimeKey{"SULastCheckTime"};
inline constexpr QLatin1StringView skippedVersionKey{"SUSkippedVersion"};

/// The argument that makes the updates' program check by itself, without the user having asked.
inline constexpr QLatin1StringView byItselfOption{"--by-itself"};

/// What people read first where there is no update to install, whoever finds out.
inline constexpr QStringView updateFailedText = u"Aucune mise à jour n’a pu être obtenue.";
