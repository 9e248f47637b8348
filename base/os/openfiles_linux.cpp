#include "base/os/openfiles.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include <sys/resource.h>

#include "base/os/linux/openfiles.h"

namespace
{

std::mutex s_lock;

/// The original limit; 0 while it has not been raised.
std::atomic<rlim_t> s_former = 0;

} // namespace

void LbOs::EnsureOpenFiles(std::uint64_t count)
{
    const std::lock_guard lock(s_lock);
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= std::min<rlim_t>(count, limit.rlim_max))
    {
        return;
    }
    // Stored before the limit is raised, so that a child started by another thread meanwhile gets the original limit.
    rlim_t none = 0;
    s_former.compare_exchange_strong(none, limit.rlim_cur);
    limit.rlim_cur = std::min<rlim_t>(count, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
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
