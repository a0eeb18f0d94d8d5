#pragma once

#include "platform/FileDescriptor.h"
#include "support/move/MoveOperations.h"

#include <QProcess>

#include <optional>

/// Runs commands with an administrator's rights, which the desktop's own dialog asks for once (polkit's pkexec). The
/// rights end with the object. Every operation waits; the request waits for the user. Main thread.
class Administrator
{
public:
    using Answer = MoveOperations::Right;

    Administrator() = default;
    ~Administrator();
    Q_DISABLE_COPY(Administrator)

    /// Whether pkexec is installed.
    [[nodiscard]] static bool canBeAsked();

    [[nodiscard]] Answer request();

    /// Runs a program and waits for its end. The exit status; absent when it could not be run or was ended by a signal.
    [[nodiscard]] std::optional<int> run(const QStringList& command);

private:
    [[nodiscard]] bool startShell();
    void endShell();
    [[nodiscard]] std::optional<QByteArray> answerTo(const QByteArray& line);

    // A shell with those rights, which reads commands from a socket. A pipe would be unsafe: other processes of the
    // user could open it through /proc.
    QProcess m_shell;
    FileDescriptor m_channel; // this end of the socket
    QByteArray m_unread;      // of the answers
};
