#pragma once

#include <QString>

#include <filesystem>
#include <system_error>

/// Reasons for a failed write that users can do something about.
enum class WriteObstacle
{
    NameTaken, ///< a folder has the file's name
    NoFolder,
    DiskFull,
    QuotaReached,
    NotAllowed,
    ReadOnly,
    NameRefused, ///< too long, or not possible on that disk
    Other
};

struct WriteFailure
{
    WriteObstacle obstacle = WriteObstacle::Other;
    /// For users, as the end of a sentence, without the file's name.
    QString reason;
};

/// The failure for a system error with that path. Checks the path now. Any thread.
[[nodiscard]] WriteFailure writeFailureOf(const std::filesystem::path& path, const std::error_code& error);
