#pragma once

#include "platform/files/WriteFailure.h"

#include <QString>

#include <expected>

/// Writes a file with personal data: only its owner can read it (0600), and it is written atomically, so the path
/// always has the old file or the whole new one. Files that a killed writer left in the folder (.pelmora-XXXXXX) are
/// removed when no process has locked them. The path is as pathFromBytes gives it. Any thread.
[[nodiscard]] std::expected<void, WriteFailure> writePrivateFile(const QString& path, const QByteArray& content);
