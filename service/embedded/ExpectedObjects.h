#pragma once

#include "service/embedded/CardMap.h"
#include "service/embedded/Tlv.h"

#include <QString>

/// The tags, with slashes between them, of the first object in a file that the map neither makes anything of nor
/// ignores; nothing when it knows them all. A tag that was damaged would take a record or a field away unnoticed.
[[nodiscard]] std::optional<QString> unexpectedObject(const CardMap& map, const CardFile& file,
                                                      const std::vector<TlvObject>& objects);
