#pragma once

#include <QString>

#include <memory>

/// Shows a short text as a notification of the desktop, in place of the last one. Does not wait; without a server for
/// notifications it does nothing. The text must have no data of a patient: notifications stay in lists and on locked
/// screens. Main thread only.
class DesktopNotification final
{
public:
    void show(const QString& title);

private:
    struct Shown;

    std::shared_ptr<Shown> m_shown; // filled in by the server's answer
};
