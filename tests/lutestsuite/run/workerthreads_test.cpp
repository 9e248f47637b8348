#include "testing/lutestsuite/run/workerthreads.h"

#include <gtest/gtest.h>

namespace
{

using LuTestSuiteRun::GetWorkerCount;

TEST(GetWorkerCount, IsAtLeastOne)
{
    EXPECT_EQ(GetWorkerCount(0), 1U);
    EXPECT_EQ(GetWorkerCount(1), 1U);
}

TEST(GetWorkerCount, IsTheRequestedNumberUpTo256)
{
    EXPECT_EQ(GetWorkerCount(2), 2U);
    EXPECT_EQ(GetWorkerCount(256), 256U);
}

TEST(GetWorkerCount, Is256ForLargerRequests)
{
    EXPECT_EQ(GetWorkerCount(257), 256U);
    EXPECT_EQ(GetWorkerCount(1000), 256U);
}

} // namespace
