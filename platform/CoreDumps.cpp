#include "platform/CoreDumps.h"

#include <sys/prctl.h>
#include <sys/resource.h>

void disableCoreDumps()
{
    // The limit is 1 byte, not 0: with any other limit the kernel still pipes the core to a program such as
    // systemd-coredump (see core(5) and fs/coredump.c). The call fails when the limit is 0 already.
    const rlimit limit{1, 1};
    if (setrlimit(RLIMIT_CORE, &limit) != 0)
        prctl(PR_SET_DUMPABLE, 0);
}
