#pragma once

#include "card/CardRecord.h"
#include "platform/Error.h"

#include <QString>

#include <expected>

/// The record of a card XML file, with "Non spécifié" as its fund. The path is as pathFromBytes gives it. The text is
/// decoded as UTF-8 or else as its XML declaration says. The error tells why the file cannot be read or parsed.
[[nodiscard]] std::expected<CardRecord, Error> loadCardFile(const QString& path);

/// The same of what the standard input has until its end. Waits for it.
[[nodiscard]] std::expected<CardRecord, Error> loadCardFromStandardInput();
