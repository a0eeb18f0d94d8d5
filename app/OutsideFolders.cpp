#include "app/OutsideFolders.h"

#include "platform/TildePath.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

void makeFolderWhereNothingIs(const QString& tildePath)
{
    const QString path = expandingTildeInPath(tildePath);
    if (!QFileInfo::exists(path))
        QDir().mkpath(path);
}

} // namespace

void checkLogDir()
{
    makeFolderWhereNothingIs(u"~/Library/Logs/santesocial"_s);
}

void checkSedicaDir()
{
    makeFolderWhereNothingIs(u"~/Library/Preferences/santesocial/sedica"_s);
}
