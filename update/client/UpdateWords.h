#pragma once

#include <QLatin1StringView>
#include <QStringView>

// Shared by the application and the update program.

/// Settings: the time of the last check, and the skipped version.
inline constexpr QLatin1StringView lastCheckTimeKey{"SULastCheckTime"};
inline constexpr QLatin1StringView skippedVersionKey{"SUSkippedVersion"};

/// The argument for an automatic check.
inline constexpr QLatin1StringView byItselfOption{"--by-itself"};

/// The first line about any failure.
inline constexpr QStringView updateFailedText = u"Aucune mise à jour n’a pu être obtenue.";
