#pragma once

#include "service/diagnosis/Diagnosis.h"

#include <chrono>

/// What a diagnosis looks at.
struct DiagnosisPlaces
{
    QString resourceFolder;
    SystemPlace installedLibrary;
    std::chrono::milliseconds patience{10'000}; // with PC/SC, and with the installed library
};

/// Looks at everything. A call that hangs is left behind: the process is then to be ended without an end of its
/// threads.
[[nodiscard]] Diagnosis diagnose(const DiagnosisPlaces& places);
