#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiterunevents.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SStats;

SCaseInfo MakeCase(std::uint32_t unitTest, ECaseRunResult result, bool warning)
{
    SCaseInfo info;
    info.unitTest = unitTest;
    info.result = result;
    info.warning = warning;
    info.executed = true;
    return info;
}

SStats Count(const std::vector<SCaseInfo>& cases, std::size_t unitTestCount)
{
    return LuTestSuiteRun::CountCases(cases, unitTestCount);
}

TEST(CountCases, DistinguishesUnitTestsWithAndWithoutWarnings)
{
    const SStats stats = Count({MakeCase(0, ECaseRunResult::Ok, false), MakeCase(1, ECaseRunResult::Ok, false),
                                MakeCase(1, ECaseRunResult::Ok, true), MakeCase(2, ECaseRunResult::Error, false)},
                               4);

    EXPECT_EQ(stats.unitTestsExecuted, 3U);
    EXPECT_EQ(stats.unitTestsPassed, 2U);
    EXPECT_EQ(stats.unitTestsPassedWithoutWarning, 1U);
}

TEST(CountCases, CountsWarningsOfCasesAndUnitTests)
{
    const SStats stats = Count({MakeCase(0, ECaseRunResult::Ok, true), MakeCase(1, ECaseRunResult::Error, true),
                                MakeCase(1, ECaseRunResult::Ok, false)},
                               2);

    EXPECT_EQ(stats.total.warnings, 2U);
    EXPECT_EQ(stats.unitTests.at(0).warnings, 1U);
    EXPECT_EQ(stats.unitTests.at(1).warnings, 1U);
}

/// The parameter is a result that counts as a failure.
class CountCasesFailure : public testing::TestWithParam<ECaseRunResult>
{
};

TEST_P(CountCasesFailure, KeepsTheUnitTestFromPassing)
{
    const SStats stats = Count({MakeCase(0, ECaseRunResult::Ok, false), MakeCase(1, ECaseRunResult::Ok, false),
                                MakeCase(1, GetParam(), false)},
                               2);

    EXPECT_EQ(stats.unitTestsExecuted, 2U);
    EXPECT_EQ(stats.unitTestsPassed, 1U);
}

INSTANTIATE_TEST_SUITE_P(Results, CountCasesFailure,
                         testing::Values(ECaseRunResult::Error, ECaseRunResult::Exception, ECaseRunResult::NoInput,
                                         ECaseRunResult::Different, ECaseRunResult::Unknown,
                                         ECaseRunResult::NoMatchingCase, ECaseRunResult::Canceled,
                                         ECaseRunResult::TimeOut));

TEST(CountCases, CountsCanceledAndTimedOutCases)
{
    const SStats stats =
        Count({MakeCase(0, ECaseRunResult::Canceled, false), MakeCase(0, ECaseRunResult::TimeOut, false)}, 1);

    EXPECT_EQ(stats.total.GetCount(ECaseRunResult::Canceled), 1U);
    EXPECT_EQ(stats.total.GetCount(ECaseRunResult::TimeOut), 1U);
    EXPECT_EQ(stats.unitTestsPassed, 0U);
}

TEST(CountCases, CountsInvalidResultsAsUnknown)
{
    const SStats stats = Count({MakeCase(0, static_cast<ECaseRunResult>(9), false),
                                MakeCase(0, static_cast<ECaseRunResult>(4'294'967'295U), false)},
                               1);

    EXPECT_EQ(stats.total.GetCount(ECaseRunResult::Unknown), 2U);
    EXPECT_EQ(stats.total.executed, 2U);
}

TEST(CountCases, OmitsUnexecutedCases)
{
    SCaseInfo planned = MakeCase(0, ECaseRunResult::Ok, true);
    planned.executed = false;

    const SStats stats = Count({planned}, 1);

    EXPECT_EQ(stats.total.executed, 0U);
    EXPECT_EQ(stats.total.warnings, 0U);
    EXPECT_EQ(stats.unitTestsExecuted, 0U);
}

TEST(CountCases, FindsTheRangeAndTheSumOfMemoryPeaks)
{
    std::vector<SCaseInfo> cases(3, MakeCase(0, ECaseRunResult::Ok, false));
    cases[0].peakMemory = 20;
    cases[1].peakMemory = 5;
    cases[2].peakMemory = 30;

    const SStats stats = Count(cases, 1);

    EXPECT_EQ(stats.peakMemoryMin, 5U);
    EXPECT_EQ(stats.peakMemoryMax, 30U);
    EXPECT_EQ(stats.peakMemorySum, 55U);
}

} // namespace
