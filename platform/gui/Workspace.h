#pragma once

#include <QString>
#include <QUrl>

/// The desktop around the program. Main thread, with a GUI application.
class Workspace
{
public:
    Workspace() = delete;

    /// Opens a file, or a folder, with the desktop's program for it. True when the desktop took the request: what
    /// becomes of it is not known here.
    static bool openFile(const QString& path);

    /// Opens an address with the desktop's program for it, under the same conditions.
    static bool openUrl(const QUrl& url);
};
