#pragma once

#include <QString>

class Bundle;
class FrontWindow;

/// Opens other programs of the desktop: mail, the help page, files and folders. Main thread only.
class DesktopRequests
{
public:
    /// Both must outlive it.
    DesktopRequests(const Bundle& bundle, FrontWindow& front)
        : m_bundle(bundle)
        , m_front(front)
    {
    }

    /// Opens a new mail to the publisher.
    void sendComment();
    void showHelp();
    /// Opens a folder; makes it if it is missing.
    void openFolder(const QString& path);
    void openFile(const QString& path);

private:
    const Bundle& m_bundle;
    FrontWindow& m_front;
};
