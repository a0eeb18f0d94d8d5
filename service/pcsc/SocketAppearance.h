#pragma once

#include "platform/FileDescriptor.h"

#include <QByteArray>

#include <chrono>

/// Waits until a socket with a path may have been made: something has changed in its folder, or that folder was made.
class SocketAppearance final
{
public:
    explicit SocketAppearance(const QByteArray& socketPath);

    /// Notices changes from here on. Calls after the first one add the socket's folder if it was made meanwhile.
    void arm();

    /// Waits for a change since arm(), at most for that time, or until the descriptor can be read.
    void wait(int stop, std::chrono::milliseconds longest);

private:
    void forgetChanges();

    QByteArray m_folder;
    FileDescriptor m_changes; // inotify; invalid when the system has none left: then only the time counts
};
