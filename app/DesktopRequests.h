#pragma once

#include <QString>

class Bundle;
class FrontWindow;

/// What the user asks of the desktop's other programs: the suggestion's mail, the help page, files and folders. Main
/// thread only.
class DesktopRequests
{
public:
    /// Both must outlive it.
    DesktopRequests(const Bundle& bundle, FrontWindow& front)
        : m_bundle(bundle)
        , m_front(front)
    {
    }

    /// Opens a new message to the publisher.
    void sendComment();
    void showHelp();
    /// Opens a folder, which is made where it is missing.
    void openFolder(const QString& path);
    void openFile(const QString& path);

private:
    const Bundle& m_bundle;
    FrontWindow& m_front;
};
