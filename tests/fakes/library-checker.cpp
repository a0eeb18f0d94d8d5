// Checks a reading library as the card service does, with shorter limits.
#include "service/check/LibraryCheck.h"

#include <cstdlib>
#include <iostream>

int main(int argc, char* argv[])
{
    if (argc != 2)
        return EXIT_FAILURE;
    constexpr std::chrono::milliseconds patience{2'000};
    const CheckReport report = checkLibrary(
        argv[1], {.writableFolders = {}, .pcscSocket = "/absent"},
        {.calls = {.read = patience, .other = patience}, .rounds = {.rounds = 100, .time = std::chrono::seconds(30)}});
    std::cout << checkText(report).toStdString();
    return EXIT_SUCCESS;
}
