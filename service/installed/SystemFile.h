#pragma once

#include <QString>

#include <expected>

#include <sys/types.h>

/// The place of a system file and its only allowed owner.
struct SystemPlace
{
    QByteArray root;     // the first folder that is checked
    QByteArray relative; // the file's path from there, without ".", ".." or an empty part
    uid_t owner = 0;

    [[nodiscard]] QByteArray path() const { return root + (root.endsWith('/') ? "" : "/") + relative; }
};

struct SystemFileFault
{
    bool isAbsent = false; // there is no file
    QString reason;        // in French, when there is a file
};

/// Checks that only the owner can have changed or replaced the file: it and all folders from the root on belong to the
/// owner, are not writable by group or others, and are no symbolic links.
[[nodiscard]] std::expected<void, SystemFileFault> checkSystemFile(const SystemPlace& place);
