#pragma once

#include "include/pelmora/reading-library.h"
#include "service/installed/SystemFile.h"

#include <QStringList>

#include <chrono>

/// The functions of a reading library.
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

/// The functions that a loaded library has; those in `missing` are null.
struct FoundFunctions
{
    InstalledFunctions functions;
    QStringList missing; // their names
};

/// Finds the functions of a library that dlopen has loaded.
[[nodiscard]] FoundFunctions findInstalledFunctions(void* library);

/// Loads the library for the rest of the process and checks its interface. None of the functions is null. It is refused
/// when others than the place's owner could have changed it, when it cannot be loaded, when a function is missing, or
/// when the interface is another one. It is first tried in a child process with a time limit: a library that crashes or
/// hangs there is refused too. No child is started when there is no file.
[[nodiscard]] std::expected<InstalledFunctions, SystemFileFault>
loadInstalledFunctions(const SystemPlace& place, std::chrono::milliseconds patience = std::chrono::seconds(5));
