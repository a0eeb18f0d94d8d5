#pragma once

#include "card/CardRecord.h"

#include <QString>

#include <optional>

class UserDefaults;

/// Whether the card that was read is to be copied for support: in the debug mode, and then only. Main thread.
[[nodiscard]] bool isDebugCopyWanted(const UserDefaults& settings, const std::optional<CardRecord>& record);

/// Writes the record's XML, and the whole record as a property list beside it, into the folder. What goes wrong is
/// logged, without a word of the card. Callable from any thread; a slow disk makes it last.
void writeDebugCopy(const CardRecord& record, const QString& folder);
