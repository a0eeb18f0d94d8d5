#pragma once

#include "platform/FileDescriptor.h"

#include <expected>

// Filters on system calls (seccomp), for good, for all threads and for all children to come. They need no_new_privs.
// The failure is an errno: nothing is refused then.

/// Refuses what a card service never does: sockets other than local connections, to be connected to, permissions,
/// owners, attributes and times of files, to look into other processes, io_uring. With the second, signals to other
/// processes too.
[[nodiscard]] std::expected<void, int> refuseCalls(bool areSignalsRefused);

/// Hands over each connection that is asked for: the descriptor tells of it (seccomp_unotify(2)), and until somebody
/// answers there, connect waits. No other such descriptor can be made after it.
[[nodiscard]] std::expected<FileDescriptor, int> handOverConnections();

/// Refuses the calls that name a receiver, or can. The system log's socket takes datagrams: with these calls, what is
/// sent on it could go to any other program.
[[nodiscard]] std::expected<void, int> refuseReceivers();
