#pragma once

#include <QByteArray>
#include <QList>

#include <expected>

/// What Landlock restricts besides files.
struct FileRules
{
    /// Signals to other processes and abstract sockets: kernels from 6.12 on.
    bool areSignalsHeld = false;
};

/// Allows changes of files only in the given folders, and writing only to the empty devices and those on USB.
/// Permanent, also for children. The error is an errno. Needs no_new_privs and a process with one thread.
[[nodiscard]] std::expected<FileRules, int> holdFiles(const QList<QByteArray>& writableFolders);
