#pragma once

#include "platform/Error.h"
#include "platform/gui/AlertQueue.h"

#include <QString>

class MainWindow;
class PrintDesk;

/// What the controller and its classes need of the main window to tell the user something: the window comes to the
/// front, shows alerts, and shows why a request is refused. Main thread only.
class FrontWindow
{
public:
    /// Both must outlive it.
    FrontWindow(MainWindow& window, PrintDesk& printDesk);

    /// Makes the window the active one, in front of the others, but for a print that asks.
    void show();
    /// A window that is hidden or iconified comes back: what belongs to it would be lost.
    void bringBack();
    /// Beeps, and sees to it that the window is seen, which says why.
    void alertUser();
    /// A request cannot be granted: beeps, and says why in the window.
    void refuse(const QString& reason);
    /// The standard error alert, over the window.
    void presentError(const Error& error);

    [[nodiscard]] MainWindow& window() { return m_window; }
    [[nodiscard]] AlertQueue& alerts() { return m_alerts; }

private:
    MainWindow& m_window;
    PrintDesk& m_printDesk;
    AlertQueue m_alerts;
};
