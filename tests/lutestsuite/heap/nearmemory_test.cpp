// Tests of memory that a jump with a 32-bit displacement can reach.

#include "testing/lutestsuite/heap/nearmemory.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "base/os/pages.h"

namespace
{

using LuTestSuite::AllocateNear;
using LuTestSuite::IsInReach;

constexpr std::uintptr_t c_Farthest = std::numeric_limits<std::int32_t>::max();

class NearMemory : public testing::Test
{
protected:
    ~NearMemory() override
    {
        for (void* const pages : m_allocated)
        {
            LbOs::ReleasePages(pages, m_size);
        }
    }

    /// Allocates memory near the target and releases it at the end of the test.
    std::uintptr_t Allocate(std::uintptr_t target)
    {
        void* const pages = AllocateNear(target, m_size);
        EXPECT_NE(pages, nullptr);
        if (pages != nullptr)
        {
            m_allocated.push_back(pages);
        }
        return reinterpret_cast<std::uintptr_t>(pages);
    }

    static std::uintptr_t GetDistance(std::uintptr_t one, std::uintptr_t other)
    {
        return std::max(one, other) - std::min(one, other);
    }

    const std::size_t m_size = LbOs::GetPageSizes().granularity;
    std::vector<void*> m_allocated;
};

int someFunction()
{
    return 1;
}
const std::uintptr_t c_Target = reinterpret_cast<std::uintptr_t>(&someFunction);

} // namespace

TEST_F(NearMemory, IsInReachOfAFunctionAndWritable)
{
    const std::uintptr_t place = Allocate(c_Target);

    EXPECT_TRUE(IsInReach(c_Target, place));
    EXPECT_TRUE(IsInReach(place + m_size, c_Target));
    std::memset(reinterpret_cast<void*>(place), 1, m_size);
}

TEST_F(NearMemory, IsNeverAllocatedTwice)
{
    const std::uintptr_t first = Allocate(c_Target);
    const std::uintptr_t second = Allocate(c_Target);

    EXPECT_GE(GetDistance(first, second), m_size);
}

TEST(NearMemoryReach, EndsAtTheLargestDisplacementsOf32Bits)
{
    constexpr std::uintptr_t c_Place = 0x7F0000000000;

    EXPECT_TRUE(IsInReach(c_Place, c_Place + c_Farthest));
    EXPECT_FALSE(IsInReach(c_Place, c_Place + c_Farthest + 1));
    EXPECT_TRUE(IsInReach(c_Place, c_Place - c_Farthest - 1));
    EXPECT_FALSE(IsInReach(c_Place, c_Place - c_Farthest - 2));
}
