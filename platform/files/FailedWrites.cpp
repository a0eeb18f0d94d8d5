#include "platform/files/FailedWrites.h"

#include <csignal>
#include <initializer_list>

void ignoreSignalsOfFailedWrites()
{
    for (const int signal : {SIGPIPE, SIGXFSZ})
        static_cast<void>(std::signal(signal, SIG_IGN));
}
