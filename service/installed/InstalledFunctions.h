#pragma once

#include "include/pelmora/reading-library.h"
#include "service/installed/SystemFile.h"

#include <chrono>

/// The functions of a reading library, all of them there.
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

/// Loads the library of that place for the rest of the process's life, and asks it for its interface. It is refused
/// when others than the place's owner could have changed it, when it cannot be loaded, lacks a function or is of
/// another interface. It is tried in another process first, for no longer than the patience: what would end the process
/// is a refusal, too. Without a file there is no other process.
[[nodiscard]] std::expected<InstalledFunctions, SystemFileFault>
loadInstalledFunctions(const SystemPlace& place, std::chrono::milliseconds patience = std::chrono::seconds(5));
