#pragma once

#include <QString>

/// Texts for users in English: the keys of the string table.
namespace MoveText {
inline constexpr QStringView titleInHome{u"Move to Applications folder in your Home folder?"};
inline constexpr QStringView title{u"Move to Applications folder?"};
inline constexpr QStringView body{u"I can move myself to the Applications folder if you'd like."};
inline constexpr QStringView authorizationNote{u"Note that this will require an administrator password."};
inline constexpr QStringView downloadsNote{u"This will keep your Downloads folder uncluttered."};
inline constexpr QStringView moveButton{u"Move to Applications Folder"};
inline constexpr QStringView stayButton{u"Do Not Move"};
inline constexpr QStringView suppressionBox{u"Do not show this message again"};
inline constexpr QStringView failure{u"Could not move to Applications folder"};
} // namespace MoveText

/// Lines of the system log with "%@" for each value.
namespace MoveLog {
inline constexpr QStringView moving{u"INFO -- Moving myself to the Applications folder"};
inline constexpr QStringView cancelled{u"INFO -- Not moving because user canceled authorization"};
inline constexpr QStringView authorizedFailure{u"ERROR -- Could not copy myself to /Applications with authorization"};
inline constexpr QStringView switching{u"INFO -- Switching to an already running version"};
inline constexpr QStringView copyFailure{u"ERROR -- Could not copy '%@' to '%@' (%@)"};
inline constexpr QStringView notCopied{u"ERROR -- Could not copy myself to %@"};
inline constexpr QStringView notDeleted{u"WARNING -- Could not delete '%@': %@"};
inline constexpr QStringView sourceLeft{
    u"WARNING -- Could not delete application after moving it to Applications folder"};
inline constexpr QStringView notTrashed{u"ERROR -- Could not trash '%@'"};
} // namespace MoveLog
