#pragma once

#include "include/pelmora/reading-library.h"
#include "service/installed/SystemFile.h"

#include <chrono>

/// The functions of a reading library; none is null.
struct InstalledFunctions
{
    decltype(&pelmora_reading_interface) interface = nullptr;
    decltype(&pelmora_reading_open) open = nullptr;
    decltype(&pelmora_reading_close) close = nullptr;
    decltype(&pelmora_reading_version) version = nullptr;
    decltype(&pelmora_reading_readers) readers = nullptr;
    decltype(&pelmora_reading_choose_readers) chooseReaders = nullptr;
    decltype(&pelmora_reading_read_card) readCard = nullptr;
};

/// Loads the library for the rest of the process and checks its interface. It is refused when others than the place's
/// owner could have changed it, when it cannot be loaded, when a function is missing, or when the interface is another
/// one. It is first tried in a child process with a time limit: a library that crashes or hangs there is refused too.
/// No child is started when there is no file.
[[nodiscard]] std::expected<InstalledFunctions, SystemFileFault>
loadInstalledFunctions(const SystemPlace& place, std::chrono::milliseconds patience = std::chrono::seconds(5));
