#include "platform/CoreDumps.h"

#include <sys/prctl.h>
#include <sys/resource.h>

void disableCoreDumps()
{
    // 1 and not 0: the kernel hands cores to a program such as systemd-coredump whatever the limit, except for this
    // value (see core(5) and fs/coredump.c). No core file fits in one byte either. A limit that is lower already cannot
    // be raised.
    const rlimit limit{1, 1};
    if (setrlimit(RLIMIT_CORE, &limit) != 0)
        prctl(PR_SET_DUMPABLE, 0);
}
