// An application that binds to the card service in its arguments, prints "bound" or "failed", and then waits until it
// is killed.
#include "card/client/LVitAccess.h"

#include <QStringList>

#include <cstdio>
#include <future>

#include <unistd.h>

int main(int argc, char* argv[])
{
    if (argc < 2)
        return 2;
    QStringList arguments;
    for (int index = 2; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));

    const auto client = std::make_shared<LVitAccess>(ServiceCommand{QString::fromLocal8Bit(argv[1]), arguments});
    std::promise<bool> bound;
    client->bindWithCompletionHandler(
        [&bound](bool isBound, const std::optional<Error>&) { bound.set_value(isBound); });
    std::puts(bound.get_future().get() ? "bound" : "failed");
    std::fflush(stdout);
    while (true)
        pause();
}
