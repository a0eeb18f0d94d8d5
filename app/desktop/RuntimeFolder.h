#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

/// Opens the session's folder for locks and sockets: XDG_RUNTIME_DIR or, if that is missing or not private, a folder of
/// the user's own in /tmp. Invalid when both fail.
[[nodiscard]] FileDescriptor openRuntimeFolder();

/// Opens a folder of this user that nobody else can access. Other folders and links are refused.
[[nodiscard]] FileDescriptor openPrivateFolder(const QString& path);
