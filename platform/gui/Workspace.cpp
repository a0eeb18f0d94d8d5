#include "platform/gui/Workspace.h"

#include <QDesktopServices>

bool Workspace::openFile(const QString& path)
{
    // As a URL every character of the path is kept.
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

bool Workspace::openUrl(const QUrl& url)
{
    return QDesktopServices::openUrl(url);
}
