#pragma once

#include <QByteArray>
#include <QTemporaryDir>

/// A server on a local socket, which accepts connections and never answers. During its life, an environment variable
/// has the socket's path.
class SilentServer
{
public:
    explicit SilentServer(const char* variable);
    ~SilentServer();
    Q_DISABLE_COPY_MOVE(SilentServer)

    [[nodiscard]] bool isListening() const { return m_isListening; }

    /// Whether a client has connected.
    [[nodiscard]] bool isAsked() const;

    /// Waits until the client that has connected first disconnects. False when no client has connected, or after a
    /// time limit. Called once.
    [[nodiscard]] bool isLeft() const;

private:
    const char* m_variable;
    QByteArray m_valueBefore;
    QTemporaryDir m_folder;
    int m_socket;
    bool m_isListening = false;
};
