#pragma once

#include <string>
#include <vector>

/// The environment of a card service, as "NAME=value": home, search path, language, settings folders and PC/SC. Other
/// variables would give access to the session's bus, display and keys.
[[nodiscard]] std::vector<std::string> serviceEnvironment();
