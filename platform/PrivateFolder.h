#pragma once

#include <filesystem>
#include <system_error>

/// Makes a folder that only its owner may enter (0700), whatever the umask. Missing folders above it are made with the
/// usual permissions. An existing folder is not changed. Any thread.
[[nodiscard]] std::error_code makePrivateFolder(const std::filesystem::path& path);
