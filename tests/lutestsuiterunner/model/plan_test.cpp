#include "testing/lutestsuiterunner/model/plan.h"

#include <gtest/gtest.h>

namespace
{

TEST(RunnerPlan, OverridesParametersOfTheRunWithParametersOfTheCase)
{
    Runner::SPlan plan;
    plan.params.timeOutSec = 5;
    plan.params.trackHeap = true;
    plan.unitTests.push_back({L"CFirst", {}, {{{}, L"eins", {}}, {{}, L"zwei", {}}}, {}, {}});
    plan.unitTests[0].cases[1].parameters[L"TimeOutSec"] = LbVariant(std::uint32_t{7});
    plan.cases = Runner::PlanCases(plan.unitTests, 1);

    EXPECT_EQ(GetParams(plan, 0).timeOutSec, 5U);
    EXPECT_EQ(GetParams(plan, 1).timeOutSec, 7U);
    EXPECT_TRUE(GetParams(plan, 1).trackHeap);
}

} // namespace
