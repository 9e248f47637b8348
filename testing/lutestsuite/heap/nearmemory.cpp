#include "testing/lutestsuite/heap/nearmemory.h"

#include <algorithm>

#include "base/os/pages.h"

namespace LuTestSuite
{

namespace
{

// Some room is left, so that all of the block is in reach from all of the function's beginning.
constexpr std::uintptr_t c_Reach = 0x7FF00000;

/// The gaps on one side of an address, one candidate each, nearest first.
class CGapWalk
{
public:
    CGapWalk(std::uintptr_t target, std::size_t size, bool isUpward) noexcept
        : m_target(target), m_size(size), m_granularity(LbOs::GetPageSizes().granularity), m_isUpward(isUpward),
          m_address(target)
    {
        Next();
    }

    bool IsAtEnd() const noexcept { return m_candidate == 0; }
    std::uintptr_t GetCandidate() const noexcept { return m_candidate; }
    std::uintptr_t GetDistance() const noexcept { return m_isUpward ? m_candidate - m_target : m_target - m_candidate; }

    void Next() noexcept
    {
        LbOs::SRegion region;
        m_candidate = 0;
        while (m_candidate == 0 && m_address != 0 && LbOs::QueryRegion(m_address, region))
        {
            const std::uintptr_t candidate = region.isFree ? fit(region) : 0;
            m_address = m_isUpward ? region.end : region.begin - 1;
            if (candidate == 0)
            {
                const std::uintptr_t distance = m_isUpward ? m_address - m_target : m_target - m_address;
                m_address = distance > c_Reach ? 0 : m_address;
                continue;
            }
            m_candidate = candidate;
            if (GetDistance() > c_Reach)
            {
                m_candidate = m_address = 0;
            }
        }
    }

private:
    /// The place in the gap that is nearest to the target, 0 when it is too small.
    std::uintptr_t fit(const LbOs::SRegion& gap) const noexcept
    {
        const std::uintptr_t mask = ~static_cast<std::uintptr_t>(m_granularity - 1);
        const std::uintptr_t first = (gap.begin + m_granularity - 1) & mask;
        if (gap.end < m_size || first > gap.end - m_size)
        {
            return 0;
        }
        return m_isUpward ? first : (gap.end - m_size) & mask;
    }

    const std::uintptr_t m_target;
    const std::size_t m_size;
    const std::size_t m_granularity;
    const bool m_isUpward;
    std::uintptr_t m_address; ///< where to look next, 0 at the end
    std::uintptr_t m_candidate = 0;
};

} // namespace

void* AllocateNear(std::uintptr_t target, std::size_t size) noexcept
{
    CGapWalk up(target, size, true);
    CGapWalk down(target, size, false);
    while (!up.IsAtEnd() || !down.IsAtEnd())
    {
        const bool isUpNearer = down.IsAtEnd() || (!up.IsAtEnd() && up.GetDistance() < down.GetDistance());
        CGapWalk& walk = isUpNearer ? up : down;
        if (void* const pages = LbOs::AllocatePagesAt(walk.GetCandidate(), size))
        {
            return pages;
        }
        // Another thread was faster.
        walk.Next();
    }
    return nullptr;
}

bool IsInReach(std::uintptr_t from, std::uintptr_t to) noexcept
{
    const auto distance = static_cast<std::int64_t>(to - from);
    return distance == static_cast<std::int32_t>(distance);
}

} // namespace LuTestSuite
