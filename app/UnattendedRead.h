#pragma once

#include "app/desktop/DesktopNotification.h"
#include "platform/Error.h"

class MainWindow;

/// A read that an inserted card has started while another program's window was in front. It opens no window; a
/// notification of the desktop tells its end. Main thread only.
class UnattendedRead final
{
public:
    /// The window must outlive it.
    explicit UnattendedRead(MainWindow& window)
        : m_window(window)
    {
    }

    /// A read starts because of a card: it is unattended unless one of the application's windows is in front.
    void begin();
    /// The user asks for something: what is told from here on is told in the window.
    void end() { m_isRunning = false; }
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// Whether its progress sheet may be shown: only over a visible window.
    [[nodiscard]] bool permitsSheet() const;
    /// If it was running, ends it with a notification.
    void succeed();
    /// The same with the failure's text, which the window's panel shows too. False if it was not running.
    [[nodiscard]] bool fail(const Error& error);

private:
    MainWindow& m_window;
    DesktopNotification m_notification;
    bool m_isRunning = false;
};
