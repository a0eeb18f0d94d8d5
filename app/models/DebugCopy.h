#pragma once

#include "card/CardRecord.h"

#include <QString>

#include <optional>

class UserDefaults;

/// Whether the card is to be copied for support, which needs the debug mode. Main thread.
[[nodiscard]] bool isDebugCopyWanted(const UserDefaults& settings, const std::optional<CardRecord>& record);

/// Writes the record's XML, and the record as a property list, to the folder. Errors are logged without data of the
/// card. Any thread; may take long on a slow disk.
void writeDebugCopy(const CardRecord& record, const QString& folder);
