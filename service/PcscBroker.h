#pragma once

#include "platform/FileDescriptor.h"

#include <QByteArray>

#include <expected>
#include <optional>

#include <sys/types.h>

/// The socket at which programs find the PC/SC service, as pcsc-lite looks for it.
[[nodiscard]] QByteArray pcscSocketPath();

/// A process outside the sandbox that makes one kind of connection for the process inside: to the PC/SC service. It
/// ends with the process that started it. It is started before anything of a card or of a library is in memory, and
/// reads nothing but addresses.
class PcscBroker final
{
public:
    /// Starts it; it waits for the notifications. The failure is an errno. For the only thread of a process.
    [[nodiscard]] static std::expected<PcscBroker, int> start(const QByteArray& socketPath);

    PcscBroker(const PcscBroker&) = delete;
    PcscBroker(PcscBroker&& other) noexcept;
    PcscBroker& operator=(const PcscBroker&) = delete;
    PcscBroker& operator=(PcscBroker&&) = delete;
    /// Ends it, and waits for that.
    ~PcscBroker();

    /// Gives it this process's connections to answer for (see handOverConnections). The failure is an errno.
    [[nodiscard]] std::expected<void, int> serve(const FileDescriptor& notifications) const;

private:
    PcscBroker(pid_t process, FileDescriptor lifeline);

    pid_t m_process; // -1 once it was handed on
    FileDescriptor m_lifeline;
};
