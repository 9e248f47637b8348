#include "testing/lutestsuite/run/plan.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using LuTestSuiteRun::GetCaseParams;
using LuTestSuiteRun::MakePlan;
using LuTestSuiteRun::PlannedCases;
using LuTestSuiteRun::SCaseInfo;
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

/// The indices of the planned cases, in order.
std::vector<std::uint32_t> GetIndices(PlannedCases planned)
{
    std::vector<std::uint32_t> indices;
    for (const LuTestSuiteRun::SPlannedCase& one : planned)
    {
        indices.push_back(one.info.testCase);
    }
    return indices;
}

TEST(MakePlan, RunsNoCaseInParallelUnlessTheRunAllowsIt)
{
    const std::vector<LuTestSuite::SUnitTest> unitTests = MakeUnitTests();
    const SParams params;
    std::vector<SCaseInfo> cases;

    const SPlan plan = MakePlan(unitTests, params, cases);

    EXPECT_THAT(GetIndices(plan.parallel), IsEmpty());
    EXPECT_THAT(GetIndices(plan.sequential), ElementsAre(0U, 1U, 2U, 3U));
}

TEST(MakePlan, RunsCasesInParallelUnlessTheyForbidIt)
{
    const std::vector<LuTestSuite::SUnitTest> unitTests = MakeUnitTests();
    SParams params;
    params.parallel = true;
    std::vector<SCaseInfo> cases;

    const SPlan plan = MakePlan(unitTests, params, cases);

    EXPECT_THAT(GetIndices(plan.parallel), ElementsAre(0U, 1U));
    EXPECT_THAT(GetIndices(plan.sequential), ElementsAre(2U, 3U));
}

TEST(MakePlan, RecordsWhetherAnyCaseRunsInAChild)
{
    std::vector<LuTestSuite::SUnitTest> unitTests = MakeUnitTests();
    const SParams inside;
    SParams external;
    external.external = true;
    std::vector<SCaseInfo> cases;

    EXPECT_FALSE(MakePlan(unitTests, inside, cases).hasExternal);
    EXPECT_TRUE(MakePlan(unitTests, external, cases).hasExternal);
    unitTests[0].cases[3].parameters[L"External"] = true;
    EXPECT_TRUE(MakePlan(unitTests, inside, cases).hasExternal);
}

TEST(MakePlan, RepeatsEachCaseBeforeTheNextOne)
{
    const std::vector<LuTestSuite::SUnitTest> unitTests = MakeUnitTests();
    SParams params;
    params.repetitions = 2;
    std::vector<SCaseInfo> cases;

    const SPlan plan = MakePlan(unitTests, params, cases);

    ASSERT_EQ(cases.size(), 8U);
    ASSERT_EQ(plan.sequential.size(), 8U);
    for (std::uint32_t index = 0; index < 8; ++index)
    {
        EXPECT_EQ(cases[index].testCase, index / 2);
        EXPECT_EQ(cases[index].repetition, index % 2);
        EXPECT_EQ(&plan.sequential[index].info, &cases[index]);
    }
}

TEST(MakePlan, GivesEachRepetitionTheParametersOfItsCase)
{
    std::vector<LuTestSuite::SUnitTest> unitTests = MakeUnitTests();
    unitTests[0].cases[1].parameters[L"TimeOutSec"] = std::uint32_t{7};
    SParams params;
    params.timeOutSec = 3;
    params.repetitions = 2;
    std::vector<SCaseInfo> cases;

    const SPlan plan = MakePlan(unitTests, params, cases);

    std::vector<std::uint32_t> timeOuts;
    for (const LuTestSuiteRun::SPlannedCase& planned : plan.sequential)
    {
        timeOuts.push_back(planned.params.timeOutSec);
    }
    EXPECT_THAT(timeOuts, ElementsAre(3U, 3U, 7U, 7U, 3U, 3U, 3U, 3U));
}

TEST(MakePlan, PlansNothingForZeroRepetitions)
{
    const std::vector<LuTestSuite::SUnitTest> unitTests = MakeUnitTests();
    SParams params;
    params.repetitions = 0;
    std::vector<SCaseInfo> cases;

    const SPlan plan = MakePlan(unitTests, params, cases);

    EXPECT_THAT(cases, IsEmpty());
    EXPECT_THAT(GetIndices(plan.sequential), IsEmpty());
}

TEST(GetCaseParams, ReturnsTheParametersOfTheRunForACaseWithoutParameters)
{
    SParams run;
    run.reportMemLeak = false;
    run.external = run.isolated = run.parallel = true;
    run.timeOutSec = 7;

    const SParams params = GetCaseParams(run, {});

    EXPECT_FALSE(params.reportMemLeak);
    EXPECT_TRUE(params.external);
    EXPECT_TRUE(params.isolated);
    EXPECT_TRUE(params.parallel);
    EXPECT_EQ(params.timeOutSec, 7U);
}

TEST(GetCaseParams, PrefersTheParametersOfTheCase)
{
    const SParams params = GetCaseParams(SParams(), {{L"ReportMemLeak", LbVariant(false)},
                                                     {L"TimeOutSec", LbVariant(std::uint32_t{12})},
                                                     {L"External", LbVariant(true)},
                                                     {L"Isolated", LbVariant(true)},
                                                     {L"Parallel", LbVariant(true)}});

    EXPECT_FALSE(params.reportMemLeak);
    EXPECT_EQ(params.timeOutSec, 12U);
    EXPECT_TRUE(params.external);
    EXPECT_TRUE(params.isolated);
    EXPECT_TRUE(params.parallel);
}

TEST(GetCaseParams, LetsACaseDisableAFlagOfTheRun)
{
    SParams run;
    run.external = run.isolated = run.parallel = true;

    const SParams params = GetCaseParams(
        run, {{L"External", LbVariant(false)}, {L"Isolated", LbVariant(false)}, {L"Parallel", LbVariant(false)}});

    EXPECT_FALSE(params.external);
    EXPECT_FALSE(params.isolated);
    EXPECT_FALSE(params.parallel);
}

TEST(GetCaseParams, KeepsReportMemLeakOfTheRunForANullParameter)
{
    SParams run;
    run.reportMemLeak = false;

    EXPECT_FALSE(GetCaseParams(run, {{L"ReportMemLeak", LbVariant()}}).reportMemLeak);
    EXPECT_TRUE(GetCaseParams(SParams(), {{L"ReportMemLeak", LbVariant()}}).reportMemLeak);
}

TEST(GetCaseParams, KeepsParametersOfTheRunThatACaseCannotSet)
{
    SParams run;
    run.verbose = true;
    run.repetitions = 4;

    const SParams params = GetCaseParams(run, {{L"MessageReportMax", LbVariant(std::uint32_t{9})}});

    EXPECT_TRUE(params.verbose);
    EXPECT_EQ(params.repetitions, 4U);
}

TEST(GetCaseParams, TreatsANullParallelParameterAsFalse)
{
    SParams run;
    run.parallel = true;

    EXPECT_FALSE(GetCaseParams(run, {{L"Parallel", LbVariant()}}).parallel);
}

} // namespace
