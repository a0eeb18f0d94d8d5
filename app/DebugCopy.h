#pragma once

#include "card/CardRecord.h"

#include <QString>

#include <optional>

/// In the debug mode, and then only, writes the XML of the card that was read, and its whole record as a property list
/// beside it, into the folder. What goes wrong is logged, without a word of the card. Main thread.
void saveXMLIfNeeded(const std::optional<CardRecord>& record, const QString& folder);
