#include "base/os/crash.h"

#include <sys/resource.h>

void LbOs::EndSilentlyOnCrash()
{
    // The system ends a crashed process by itself; what may take long is the dump. The limit of 1, too small for any
    // file, is the one that also keeps the system from handing the dump to a program.
    rlimit limit = {};
    getrlimit(RLIMIT_CORE, &limit);
    limit.rlim_cur = limit.rlim_max == 0 ? 0 : 1;
    setrlimit(RLIMIT_CORE, &limit);
}
