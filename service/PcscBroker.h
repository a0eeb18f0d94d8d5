#pragma once

#include "platform/FileDescriptor.h"

#include <QByteArray>

#include <expected>

#include <sys/types.h>

/// The socket of the PC/SC service, as pcsc-lite looks it up.
[[nodiscard]] QByteArray pcscSocketPath();

/// A process outside of the sandbox that connects the process inside to the PC/SC service, and to nothing else. It ends
/// with its parent, is started before there is data of a card in memory, and reads only addresses.
class PcscBroker final
{
public:
    /// Starts the process. The error is an errno. For a process with one thread.
    [[nodiscard]] static std::expected<PcscBroker, int> start(const QByteArray& socketPath);

    PcscBroker(const PcscBroker&) = delete;
    PcscBroker(PcscBroker&& other) noexcept;
    PcscBroker& operator=(const PcscBroker&) = delete;
    PcscBroker& operator=(PcscBroker&&) = delete;
    /// Ends the process and waits for it.
    ~PcscBroker();

    /// Passes the descriptor of handOverConnections() to it. The error is an errno.
    [[nodiscard]] std::expected<void, int> serve(const FileDescriptor& notifications) const;

private:
    PcscBroker(pid_t process, FileDescriptor lifeline);

    pid_t m_process; // -1 once moved from
    FileDescriptor m_lifeline;
};
