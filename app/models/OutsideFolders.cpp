#include "app/models/OutsideFolders.h"

#include "card/wire/OutsideFolderNames.h"
#include "platform/TildePath.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

void makeFolderWhereNothingIs(QLatin1StringView pathFromHome)
{
    const QString path = expandingTildeInPath(u"~/"_s + pathFromHome);
    if (!QFileInfo::exists(path))
        QDir().mkpath(path);
}

} // namespace

void checkLogDir()
{
    makeFolderWhereNothingIs(OutsideFolder::logs);
}

void checkSedicaDir()
{
    makeFolderWhereNothingIs(OutsideFolder::sedica);
}
