#include "support/move/MoveTrash.h"

#include "support/move/FormatText.h"
#include "support/move/MoveCommands.h"
#include "support/move/MoveTexts.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

QStringList trashScript(const QString& path)
{
    return {u"set theFile to POSIX file \""_s + path + u'"', u"tell application \"Finder\""_s,
            u"move theFile to trash"_s, u"end tell"_s};
}

} // namespace

bool moveToTrash(const QString& path, int platformRelease, MoveOperations& operations)
{
    if (platformRelease >= PlatformRelease::firstOf10_8 && operations.trashItem(path))
        return true;
    const QFileInfo item(path);
    if (operations.recycleItem(item.fileName(), item.path()))
        return true;
    const std::expected<void, QString> end = operations.runScript(trashScript(path));
    if (end)
        return true;
    operations.log(MoveOperations::LogLevel::Error, formattedText(MoveLog::scriptFailure, {end.error()}));
    operations.log(MoveOperations::LogLevel::Error, formattedText(MoveLog::notTrashed, {path}));
    return false;
}
