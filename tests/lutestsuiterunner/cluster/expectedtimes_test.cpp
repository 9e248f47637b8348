#include "testing/lutestsuiterunner/cluster/expectedtimes.h"

#include <gtest/gtest.h>

namespace
{

TEST(RunnerExpectedTimes, AreLongForUnknownCases)
{
    Runner::SPlan plan;
    plan.cases.resize(21);
    Runner::PreviousCases previous(21);
    for (std::uint64_t index = 0; index < 20; ++index)
    {
        previous[index] = Runner::SPreviousCase{(index + 1) * 10, false};
    }
    Runner::SetExpectedTimes(plan, previous);

    EXPECT_EQ(plan.cases[0].expected, 10U);
    EXPECT_EQ(plan.cases[20].expected, 195U);
}

TEST(RunnerExpectedTimes, AreZeroWithoutEarlierRuns)
{
    Runner::SPlan plan;
    plan.cases.resize(2);
    Runner::SetExpectedTimes(plan, Runner::PreviousCases(2));

    EXPECT_EQ(plan.cases[0].expected, 0U);
}

} // namespace
