#include "testing/lutestsuite/run/plan.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using LuTestSuiteRun::SParams;
using LuTestSuiteRun::SPlan;
using testing::ElementsAre;
using testing::IsEmpty;

/// Cases whose "Parallel" is absent, true, false and null, in this order.
std::vector<LuTestSuite::SUnitTest> MakeUnitTests()
{
    std::vector<LuTestSuite::SUnitTest> unitTests(1);
    unitTests[0].cases.resize(4);
    unitTests[0].cases[1].parameters[L"Parallel"] = true;
    unitTests[0].cases[2].parameters[L"Parallel"] = false;
    unitTests[0].cases[3].parameters[L"Parallel"] = LbVariant();
    return unitTests;
}

TEST(MakePlan, LetsNoCaseGoParallelUnlessTheRunAllowsIt)
{
    const SPlan plan = LuTestSuiteRun::MakePlan(MakeUnitTests(), SParams());

    EXPECT_THAT(plan.parallel, IsEmpty());
    EXPECT_THAT(plan.sequential, ElementsAre(0U, 1U, 2U, 3U));
}

TEST(MakePlan, LetsCasesGoParallelThatDoNotObject)
{
    SParams params;
    params.parallel = true;

    const SPlan plan = LuTestSuiteRun::MakePlan(MakeUnitTests(), params);

    EXPECT_THAT(plan.parallel, ElementsAre(0U, 1U));
    EXPECT_THAT(plan.sequential, ElementsAre(2U, 3U));
}

TEST(MakePlan, KnowsWhetherAnyCaseRunsInAChild)
{
    std::vector<LuTestSuite::SUnitTest> unitTests = MakeUnitTests();
    SParams external;
    external.external = true;

    EXPECT_FALSE(LuTestSuiteRun::MakePlan(unitTests, SParams()).hasExternal);
    EXPECT_TRUE(LuTestSuiteRun::MakePlan(unitTests, external).hasExternal);
    unitTests[0].cases[3].parameters[L"External"] = true;
    EXPECT_TRUE(LuTestSuiteRun::MakePlan(unitTests, SParams()).hasExternal);
}

TEST(MakePlan, RepeatsEachCaseBeforeTheNextOne)
{
    SParams params;
    params.repetitions = 2;

    const SPlan plan = LuTestSuiteRun::MakePlan(MakeUnitTests(), params);

    ASSERT_EQ(plan.cases.size(), 8U);
    for (std::uint32_t index = 0; index < 8; ++index)
    {
        EXPECT_EQ(plan.cases[index].testCase, index / 2);
        EXPECT_EQ(plan.cases[index].repetition, index % 2);
    }
}

} // namespace
