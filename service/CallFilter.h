#pragma once

#include "platform/FileDescriptor.h"

#include <expected>

// Permanent filters on system calls (seccomp) for all threads and future children. They need no_new_privs. The error is
// an errno; then nothing is refused.

/// Refuses calls that a card service does not need: sockets except local ones for connecting, changes of permissions,
/// owners, attributes and times of files, access to other processes, io_uring; on request signals to others.
[[nodiscard]] std::expected<void, int> refuseCalls(bool areSignalsRefused);

/// Stops each connect call until it is answered through the descriptor (seccomp_unotify(2)), the only one.
[[nodiscard]] std::expected<FileDescriptor, int> handOverConnections();

/// Refuses calls that can name a receiver: through the system log's datagram socket they could send to other programs.
[[nodiscard]] std::expected<void, int> refuseReceivers();
