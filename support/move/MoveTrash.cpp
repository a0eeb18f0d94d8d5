#include "support/move/MoveTrash.h"

#include "support/move/FormatText.h"
#include "support/move/MoveTexts.h"

#include <QFileInfo>

bool moveToTrash(const QString& path, MoveOperations& operations)
{
    const QFileInfo item(path);
    if (operations.trashItem(path) || operations.recycleItem(item.fileName(), item.path()))
        return true;
    operations.log(MoveOperations::LogLevel::Error, formattedText(MoveLog::notTrashed, {path}));
    return false;
}
