#include "base/os/forkmark.h"

#include <atomic>

#include <sys/mman.h>
#include <unistd.h>

#include "base/os/pages.h"

namespace
{

using Mark = std::atomic<std::uint64_t>;

/// Memory that the system zeroes in every copy of the process. Fork handlers would miss some copies. Null if the system
/// has no such memory.
Mark* makeMark() noexcept
{
    constexpr std::size_t c_Size = sizeof(Mark);
    void* const page = LbOs::AllocatePages(c_Size);
    if (page == nullptr)
    {
        return nullptr;
    }
    if (madvise(page, c_Size, MADV_WIPEONFORK) != 0)
    {
        LbOs::ReleasePages(page, c_Size);
        return nullptr;
    }
    return static_cast<Mark*>(page);
}

} // namespace

std::uint64_t LbOs::GetForkMark() noexcept
{
    static Mark* const s_mark = makeMark();
    if (s_mark == nullptr)
    {
        return static_cast<std::uint64_t>(getpid());
    }
    if (const std::uint64_t mark = s_mark->load(std::memory_order_relaxed); mark != 0)
    {
        return mark;
    }
    // Ordinary memory: a copy continues with the count that the process had when it was copied.
    static std::atomic<std::uint64_t> s_last = 0;
    std::uint64_t mark = 0;
    const std::uint64_t next = ++s_last;
    return s_mark->compare_exchange_strong(mark, next) ? next : mark;
}
