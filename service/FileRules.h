#pragma once

#include <QByteArray>
#include <QList>

#include <expected>

/// What the kernel's rules on files (Landlock) hold besides files.
struct FileRules
{
    /// No signal reaches a process outside, and no abstract socket: kernels from 6.12 on.
    bool areSignalsHeld = false;
};

/// Forbids, for good and for all children to come, to change any file but the given folders' content, those of them
/// that are there, and to write to any device but the empty ones and those on USB. The failure is an errno: nothing is
/// forbidden then. Needs no_new_privs. For the only thread of a process.
[[nodiscard]] std::expected<FileRules, int> holdFiles(const QList<QByteArray>& writableFolders);
