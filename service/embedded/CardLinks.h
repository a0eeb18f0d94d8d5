#pragma once

#include "service/embedded/CardMap.h"
#include "service/embedded/Tlv.h"

#include <QString>

/// Records of a card's file, in its order.
using CardRecords = std::vector<const TlvObject*>;

/// The record of each beneficiary, in their order, by the link of a source that has one; null for a beneficiary that is
/// linked to none. The error is what makes it doubtful whose a record is, in French: a record of no beneficiary, two
/// of one, or one that tells the quality of two.
[[nodiscard]] std::expected<CardRecords, QString>
linkedRecords(const CardRecordSource& source, const CardRecords& records, const CardRecords& beneficiaries);
