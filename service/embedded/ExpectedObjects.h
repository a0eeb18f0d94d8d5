#pragma once

#include "service/embedded/CardMap.h"
#include "service/embedded/Tlv.h"

#include <QString>

/// The tags, joined by slashes, of the first object in a file that is neither used nor ignored by the map. A damaged
/// tag would otherwise remove a record or a field unnoticed.
[[nodiscard]] std::optional<QString> unexpectedObject(const CardMap& map, const CardFile& file,
                                                      const std::vector<TlvObject>& objects);
