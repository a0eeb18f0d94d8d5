#pragma once

#include "card/CardRecord.h"

#include <QVariantMap>

/// All entries of a record under its own keys, those of its beneficiaries too, for files in a general format. They are
/// a patient's data: not for a log.
[[nodiscard]] QVariantMap entriesOfRecord(const CardRecord& record);
