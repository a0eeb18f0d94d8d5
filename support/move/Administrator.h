#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>

#include <optional>

/// An administrator's rights, asked of the user once by the desktop's own dialog (polkit's pkexec), for a few commands.
/// They end with the object. Main thread; every operation waits, the request for as long as the user thinks.
class Administrator
{
public:
    enum class Answer
    {
        Granted,
        /// The user has closed the dialog.
        Cancelled,
        /// Nobody may have them here, or they cannot be asked for.
        Refused
    };

    Administrator() = default;
    ~Administrator();
    Administrator(const Administrator&) = delete;
    Administrator& operator=(const Administrator&) = delete;

    /// Whether this system has the means to ask.
    [[nodiscard]] static bool canBeAsked();

    [[nodiscard]] Answer request();

    /// Runs a program, with its arguments, and waits for its end. Its exit status; nothing when it could not be run, or
    /// did not end by itself.
    [[nodiscard]] std::optional<int> run(const QStringList& command);

private:
    [[nodiscard]] bool startShell();
    void endShell();
    [[nodiscard]] std::optional<QByteArray> answerTo(const QByteArray& line);

    // A shell with those rights. It reads commands from a socket: a pipe could be opened by other processes of the
    // user through this process's descriptors in /proc, a socket cannot.
    QProcess m_shell;
    int m_channel = -1;  // this end of the socket
    QByteArray m_unread; // of the answers
};
