#include "testing/lutestsuite/heap/nearmemory.h"

#include "base/os/pages.h"

namespace LuTestSuite
{

namespace
{

// Leaves a margin, so that every byte of the block is in reach of every byte of the function's beginning.
constexpr std::uintptr_t c_Reach = 0x7FF00000;

/// Finds the place for a block that is nearest to the target, but farther away than `tried`.
struct SSearch
{
    const std::uintptr_t target;
    const std::size_t size;
    const std::size_t granularity;
    const std::uintptr_t tried;
    std::uintptr_t place = 0;
    std::uintptr_t distance = c_Reach + 1;

    void Consider(const LbOs::SRegion& gap) noexcept
    {
        const std::uintptr_t mask = ~static_cast<std::uintptr_t>(granularity - 1);
        const std::uintptr_t first = (gap.begin + granularity - 1) & mask;
        if (gap.end < size || first > gap.end - size)
        {
            return;
        }
        const bool isAbove = gap.begin > target;
        const std::uintptr_t candidate = isAbove ? first : (gap.end - size) & mask;
        const std::uintptr_t candidateDistance = isAbove ? candidate - target : target - candidate;
        // Address 0 means "not found"; the system never allocates it.
        if (candidate != 0 && candidateDistance > tried && candidateDistance < distance)
        {
            place = candidate;
            distance = candidateDistance;
        }
    }
};

bool visit(const LbOs::SRegion& region, void* context) noexcept
{
    auto& search = *static_cast<SSearch*>(context);
    if (region.isFree)
    {
        search.Consider(region);
    }
    // Ends the visit after the first place above the target, since all later places are farther away.
    return search.place <= search.target;
}

} // namespace

void* AllocateNear(std::uintptr_t target, std::size_t size) noexcept
{
    const std::size_t granularity = LbOs::GetPageSizes().granularity;
    const std::uintptr_t begin = target > c_Reach ? target - c_Reach : 0;
    std::uintptr_t tried = 0;
    while (true)
    {
        SSearch search{target, size, granularity, tried};
        LbOs::VisitRegions(begin, target + c_Reach, visit, &search);
        if (search.place == 0)
        {
            return nullptr;
        }
        if (void* const pages = LbOs::AllocatePagesAt(search.place, size))
        {
            return pages;
        }
        // Another thread has taken the place meanwhile.
        tried = search.distance;
    }
}

bool IsInReach(std::uintptr_t from, std::uintptr_t to) noexcept
{
    const auto distance = static_cast<std::int64_t>(to - from);
    return distance == static_cast<std::int32_t>(distance);
}

} // namespace LuTestSuite
