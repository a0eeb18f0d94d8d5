#pragma once

#include "platform/Error.h"
#include "platform/gui/AlertQueue.h"

#include <QString>

class MainWindow;
class PrintDesk;

/// Messages to the user: alerts over the main window, and why a request is refused. Main thread only.
class FrontWindow
{
public:
    /// Both must outlive it.
    FrontWindow(MainWindow& window, PrintDesk& printDesk);

    /// Brings the window to the front, behind a print dialog.
    void show();
    /// Shows a hidden or iconified window, because its alerts would not be visible.
    void bringBack();
    /// Beeps, and makes the window visible.
    void alertUser();
    /// Beeps, and shows the reason in the window.
    void refuse(const QString& reason);
    /// Shows the standard error alert over the window.
    void presentError(const Error& error);

    [[nodiscard]] MainWindow& window() { return m_window; }
    [[nodiscard]] AlertQueue& alerts() { return m_alerts; }

private:
    MainWindow& m_window;
    PrintDesk& m_printDesk;
    AlertQueue m_alerts;
};
