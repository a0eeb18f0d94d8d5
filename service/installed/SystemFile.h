#pragma once

#include <QByteArray>
#include <QString>

#include <expected>

#include <sys/types.h>

/// Where a file of the system is, and who alone may have put it there.
struct SystemPlace
{
    QByteArray root;     // the first folder that is looked at
    QByteArray relative; // the file from there, without ".", ".." or an empty part
    uid_t owner = 0;

    [[nodiscard]] QByteArray path() const { return root + (root.endsWith('/') ? "" : "/") + relative; }
};

/// Why a file of the system is not used.
struct SystemFileFault
{
    bool isAbsent = false; // there is none, which is no fault of anybody's
    QString reason;        // otherwise, in French
};

/// Whether the file is there, and no one but its owner can have changed it or put another one in its place: the file
/// and all folders above it, from the root on, belong to the owner, none can be written by its group or by others, and
/// none is a symbolic link. What has passed can be used by its path.
[[nodiscard]] std::expected<void, SystemFileFault> checkSystemFile(const SystemPlace& place);
