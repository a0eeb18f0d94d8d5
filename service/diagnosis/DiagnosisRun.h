#pragma once

#include "service/diagnosis/Diagnosis.h"

#include <chrono>

struct DiagnosisPlaces
{
    QString resourceFolder;
    SystemPlace installedLibrary;
    std::chrono::milliseconds patience{10'000}; // for PC/SC and for the installed library
};

/// Runs the diagnosis. A hanging call stays behind on its thread: the process must then be ended with _Exit.
[[nodiscard]] Diagnosis diagnose(const DiagnosisPlaces& places);
