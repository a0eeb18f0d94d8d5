#include "platform/TildePath.h"

#include <QDir>

QString expandingTildeInPath(const QString& path)
{
    if (path != u'~' && !path.startsWith(u"~/"))
        return path;
    return QDir::homePath() + path.sliced(1);
}
