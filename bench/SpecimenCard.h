#pragma once

#include "card/CardRecord.h"

/// The invented card whose attestation the bare page shows.
[[nodiscard]] CardRecord specimenCard();
