#pragma once

#include <filesystem>
#include <system_error>

/// Makes a folder that its owner alone may enter (0700), whatever the umask, and those above it, where they are
/// missing, with the system's usual rights. A folder that is there already is left as it is. Any thread.
[[nodiscard]] std::error_code makePrivateFolder(const std::filesystem::path& path);
