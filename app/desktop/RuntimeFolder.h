#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

/// The folder of the user's session for what lives as long as programs run (locks, sockets), opened: XDG_RUNTIME_DIR
/// or, where that is missing or not to be trusted, a folder of the user's own under /tmp. Invalid when there is
/// neither.
[[nodiscard]] FileDescriptor openRuntimeFolder();

/// Opens a folder that belongs to this user and that nobody else may enter; anything else, links too, is refused.
[[nodiscard]] FileDescriptor openPrivateFolder(const QString& path);
