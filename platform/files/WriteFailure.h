#pragma once

#include <QString>

#include <filesystem>
#include <system_error>

/// What stands in the way of writing a file, as far as people can do something about it.
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

/// Why a file was not written.
struct WriteFailure
{
    WriteObstacle obstacle = WriteObstacle::Other;
    /// The reason for people, as the end of a sentence; it names no file.
    QString reason;
};

/// What the system's error means for a file of that path. Looks at the path now; callable from any thread.
[[nodiscard]] WriteFailure writeFailureOf(const std::filesystem::path& path, const std::error_code& error);
