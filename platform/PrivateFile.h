#pragma once

#include <QByteArray>
#include <QString>

#include <expected>

/// Writes a file that holds personal data: readable by its owner alone (0600) from its first byte, and atomically, so
/// that whatever happens the path holds the old file or the whole new one. The failure is the reason, for people to
/// read.
[[nodiscard]] std::expected<void, QString> writePrivateFile(const QString& path, const QByteArray& content);
