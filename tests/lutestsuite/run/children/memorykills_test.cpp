#include "testing/lutestsuite/run/children/memorykills.h"

#include <gtest/gtest.h>

namespace
{

std::uint64_t s_kills = 0;

/// Tests on a system that has already killed three processes.
class MemoryKills : public testing::Test
{
protected:
    MemoryKills()
    {
        s_kills = 3;
        m_kills.Forget();
    }

    LuTestSuiteRun::CMemoryKills m_kills{[] { return s_kills; }};
};

TEST_F(MemoryKills, BeforeTheRunBelongToNoChild)
{
    EXPECT_FALSE(m_kills.Take());
}

TEST_F(MemoryKills, BelongToOneChildEach)
{
    s_kills += 2;

    EXPECT_TRUE(m_kills.Take());
    EXPECT_TRUE(m_kills.Take());
    EXPECT_FALSE(m_kills.Take());
}

} // namespace
