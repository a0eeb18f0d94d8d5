#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

/// Opens the session's folder for locks and sockets: XDG_RUNTIME_DIR or, if that is missing or not private, a folder of
/// the user's own in /tmp. Invalid when both fail.
[[nodiscard]] FileDescriptor openRuntimeFolder();

/// Opens a folder that belongs to this user and that other users cannot access. All others are refused, and links too.
[[nodiscard]] FileDescriptor openPrivateFolder(const QString& path);
