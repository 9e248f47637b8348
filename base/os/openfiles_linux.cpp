#include "base/os/openfiles.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include <sys/resource.h>

#include "base/os/openfiles_linux.h"

namespace
{

std::mutex s_lock;

/// The limit before it was raised; 0 as long as it was not.
std::atomic<rlim_t> s_former = 0;

} // namespace

void LbOs::AssertOpenFiles(std::uint64_t count)
{
    const std::lock_guard lock(s_lock);
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= std::min<rlim_t>(count, limit.rlim_max))
    {
        return;
    }
    const rlim_t former = limit.rlim_cur;
    limit.rlim_cur = std::min<rlim_t>(count, limit.rlim_max);
    if (setrlimit(RLIMIT_NOFILE, &limit) == 0 && s_former == 0)
    {
        s_former = former;
    }
}

void LbOs::Linux::RestoreOpenFileLimit() noexcept
{
    rlimit limit = {};
    if (s_former != 0 && getrlimit(RLIMIT_NOFILE, &limit) == 0)
    {
        limit.rlim_cur = s_former;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}
