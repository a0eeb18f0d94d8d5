#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

/// Decodes an XML text as its byte order mark or else its XML declaration says, by default UTF-8: UTF-8, UTF-16,
/// ISO-8859-1, windows-1252 or US-ASCII. Nothing when it names another encoding or holds bytes that its encoding lacks.
[[nodiscard]] std::optional<QString> decodeXmlBytes(QByteArrayView bytes);
