#pragma once

#include <QString>

class Bundle;
class FrontWindow;
class QWidget;

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
    /// The help page at this element, or at its beginning.
    void showHelp(const QString& element = {});
    /// Shows what the diagnosis says in a window over that one.
    void showDiagnosis(QWidget& window) const;
    /// Opens a folder; makes it if it is missing.
    void openFolder(const QString& path);
    void openFile(const QString& path);

private:
    const Bundle& m_bundle;
    FrontWindow& m_front;
};
