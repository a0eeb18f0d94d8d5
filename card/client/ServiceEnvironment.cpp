#include "card/client/ServiceEnvironment.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <unistd.h>

namespace {

constexpr std::array<std::string_view, 10> namesHandedOn{
    "HOME",           "USER", "LOGNAME", "PATH", "TZ", "LANG", "LANGUAGE", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS",
    "LD_LIBRARY_PATH"};
constexpr std::array<std::string_view, 3> beginnings{"LC_", "PCSCLITE_", "LIBPCSCLITE_"};

bool isForServices(std::string_view variable)
{
    const std::string_view name = variable.substr(0, variable.find('='));
    return std::ranges::find(namesHandedOn, name) != namesHandedOn.end() ||
           std::ranges::any_of(beginnings, [name](std::string_view start) { return name.starts_with(start); });
}

} // namespace

std::vector<std::string> serviceEnvironment()
{
    std::vector<std::string> environment;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        if (isForServices(*variable))
            environment.emplace_back(*variable);
    }
    return environment;
}
