#pragma once

#include "support/move/MoveOperations.h"

#include <QString>

// Paths with special characters of shells and scripts, and the operations on them.
namespace MoveTexts {

using namespace Qt::StringLiterals;

inline const QString bundle = u"/Volumes/L'été/Pelmora.app"_s;
inline const QString quotedBundle = u"'/Volumes/L'\\''été/Pelmora.app'"_s;

inline QString textOf(const MoveCommand& command)
{
    return (QStringList(command.program) + command.arguments).join(" | "_L1);
}

inline const QString path = u"/home/anne/L'été \"2\"/Pelmora.app"_s;
inline const QString trash = u"trash | "_s + path;
inline const QString recycle = u"recycle | Pelmora.app | /home/anne/L'été \"2\""_s;

} // namespace MoveTexts
