#pragma once

#include <string>
#include <vector>

/// The variables of this process's environment that a card service is given, as "NAME=value": home, search path,
/// language, settings folders, and those of PC/SC. The others lead to the session's bus, display and keys.
[[nodiscard]] std::vector<std::string> serviceEnvironment();
