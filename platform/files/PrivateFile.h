#pragma once

#include "platform/files/WriteFailure.h"

#include <QByteArray>
#include <QString>

#include <expected>

/// Writes a file that holds personal data: readable by its owner alone (0600) from its first byte, and atomically, so
/// that whatever happens the path holds the old file or the whole new one. What a killed writer has left in the folder
/// (.pelmora-XXXXXX, six letters or digits) is removed once no process holds its lock. The path is as pathFromBytes
/// gives it. Any thread.
[[nodiscard]] std::expected<void, WriteFailure> writePrivateFile(const QString& path, const QByteArray& content);
