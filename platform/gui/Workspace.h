#pragma once

#include <QString>
#include <QUrl>

/// Opens things with the desktop's programs. Main thread, with a GUI application.
class Workspace
{
public:
    Workspace() = delete;

    /// Opens a file or a folder. True when the desktop accepted the request; whether the program starts is not known.
    static bool openFile(const QString& path);

    static bool openUrl(const QUrl& url);
};
