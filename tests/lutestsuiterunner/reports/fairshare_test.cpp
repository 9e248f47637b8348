#include "testing/lutestsuiterunner/reports/fairshare.h"

#include <limits>

#include <gtest/gtest.h>

namespace
{

TEST(RunnerFairShare, GivesLongTextsTheSpaceThatShortTextsLeave)
{
    EXPECT_EQ(Runner::GetFairShare({100, 10, 100}, 110), 50U);
    EXPECT_EQ(Runner::GetFairShare({100, 100, 100}, 110), 36U);
}

TEST(RunnerFairShare, DoesNotLimitTextsIfAllFit)
{
    EXPECT_EQ(Runner::GetFairShare({10, 20}, 30), std::numeric_limits<std::size_t>::max());
    EXPECT_EQ(Runner::GetFairShare({}, 0), std::numeric_limits<std::size_t>::max());
}

} // namespace
