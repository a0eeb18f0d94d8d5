#pragma once

#include "card/CardRecord.h"
#include "platform/Error.h"

#include <QString>

#include <expected>

/// The card record of a card XML file (its path as pathFromBytes gives it), whose fund is shown as "Non spécifié". The
/// file is read as UTF-8 text; one that is not is read as its XML declaration says. The failure is why the file cannot
/// be read, parsed or understood.
[[nodiscard]] std::expected<CardRecord, Error> loadCardFile(const QString& path);
