#include "app/door/Door.h"

#include <array>
#include <climits>
#include <cstdio>

#include <unistd.h>

int main(int argc, char* argv[])
{
    std::array<char, PATH_MAX> self{}; // TREE/bin/pelmora, whatever link it was started by
    std::array<char, PATH_MAX + 64> program{};
    if (readlink("/proc/self/exe", self.data(), self.size() - 1) > 0) {
        const std::string_view own(self.data());
        const std::string_view tree = own.substr(0, own.rfind('/', own.rfind('/') - 1));
        std::snprintf(program.data(), program.size(), "%.*s/libexec/pelmora/%s", static_cast<int>(tree.size()),
                      tree.data(), programFor(std::span(argv, static_cast<std::size_t>(argc))));
        execv(program.data(), argv);
    }
    std::fputs("pelmora : l’installation de Pelmora est incomplète.\n", stderr);
    return 1;
}
