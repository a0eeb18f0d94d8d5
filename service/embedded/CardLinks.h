#pragma once

#include "service/embedded/CardMap.h"
#include "service/embedded/Tlv.h"

#include <QString>

/// Records of a file, in its order.
using CardRecords = std::vector<const TlvObject*>;

/// The linked record of each beneficiary, in their order; null for none. The error, in French, is an ambiguous record:
/// one of no beneficiary, a second one of a beneficiary, or one that gives the quality of two.
[[nodiscard]] std::expected<CardRecords, QString>
linkedRecords(const CardRecordSource& source, const CardRecords& records, const CardRecords& beneficiaries);
