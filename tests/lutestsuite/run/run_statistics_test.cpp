#include <algorithm>
#include <limits>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/runtest.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SRunResult;
using LuTestSuiteRun::SStats;

constexpr std::uint64_t c_Largest = std::numeric_limits<std::uint64_t>::max();

class RunStatistics : public RunTest
{
protected:
    /// Three unit tests: one has every result except cancellation and time-out, one passes, one fails.
    SRunResult RunMixed()
    {
        return Run(MakeSetup(
            {MakeUnitTest(L"CResultModel", {L"keine Eingabe", L"bestanden", L"fehlgeschlagen", L"eigene Ausnahme",
                                            L"abweichend", L"unbekannter Wert", L"ohne Antwort", L"gibt es nicht"}),
             MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"}), MakeUnitTest(L"CFailedModel", {L"allein"})}));
    }

    /// Runs two unit tests, and cancels the run before the second case of the first one.
    SRunResult RunCanceledAfterOneCase()
    {
        LuTestSuiteSetup setup = MakeSetup(
            {MakeUnitTest(L"CPassedModel", {L"eins", L"zwei mit Lücke"}), MakeUnitTest(L"CFailedModel", {L"allein"})});
        bool isFirstDone = false;
        setup.resultCallback = [&](ECaseRunResult) { isFirstDone = true; };
        setup.checkCallback = [&] { return isFirstDone; };
        return Run(setup);
    }
};

TEST_F(RunStatistics, CountEachResult)
{
    const SStats::SCounts total = RunMixed().stats.total;

    EXPECT_EQ(total.GetCount(ECaseRunResult::Ok), 4U);
    EXPECT_EQ(total.GetCount(ECaseRunResult::Error), 2U);
    EXPECT_EQ(total.GetCount(ECaseRunResult::Exception), 1U);
    EXPECT_EQ(total.GetCount(ECaseRunResult::NoInput), 1U);
    EXPECT_EQ(total.GetCount(ECaseRunResult::Different), 1U);
    EXPECT_EQ(total.GetCount(ECaseRunResult::Unknown), 1U);
    EXPECT_EQ(total.GetCount(ECaseRunResult::NoMatchingCase), 1U);
    EXPECT_EQ(total.GetCount(ECaseRunResult::Canceled), 0U);
    EXPECT_EQ(total.GetCount(ECaseRunResult::TimeOut), 0U);
    EXPECT_EQ(total.executed, 11U);
    EXPECT_EQ(total.warnings, 0U);
}

TEST_F(RunStatistics, CountTheResultsOfEachUnitTest)
{
    const SStats stats = RunMixed().stats;

    ASSERT_EQ(stats.unitTests.size(), 3U);
    EXPECT_EQ(stats.unitTests[0].executed, 8U);
    EXPECT_EQ(stats.unitTests[0].GetCount(ECaseRunResult::Ok), 2U);
    EXPECT_EQ(stats.unitTests[0].GetCount(ECaseRunResult::NoMatchingCase), 1U);
    EXPECT_EQ(stats.unitTests[1].executed, 2U);
    EXPECT_EQ(stats.unitTests[1].GetCount(ECaseRunResult::Ok), 2U);
    EXPECT_EQ(stats.unitTests[2].executed, 1U);
    EXPECT_EQ(stats.unitTests[2].GetCount(ECaseRunResult::Error), 1U);
}

TEST_F(RunStatistics, CountExecutedAndPassedUnitTests)
{
    const SStats stats = RunMixed().stats;

    EXPECT_EQ(stats.unitTestsExecuted, 3U);
    EXPECT_EQ(stats.unitTestsPassed, 1U);
    EXPECT_EQ(stats.unitTestsPassedWithoutWarning, 1U);
}

TEST_F(RunStatistics, SumTheTimesOfCases)
{
    const SRunResult result = RunMixed();

    std::uint64_t sum = 0;
    for (const LuTestSuiteRun::SCaseInfo& info : result.cases)
    {
        sum += info.time;
    }
    EXPECT_EQ(result.stats.caseTimeSum, sum);
    EXPECT_GT(sum, 0U);
}

TEST_F(RunStatistics, FindTheShortestAndTheLongestCase)
{
    const SRunResult result = RunMixed();

    const auto [shortest, longest] = std::ranges::minmax_element(result.cases, {}, &LuTestSuiteRun::SCaseInfo::time);
    EXPECT_EQ(result.stats.caseTimeMin, shortest->time);
    EXPECT_EQ(result.stats.caseTimeMax, longest->time);
}

TEST_F(RunStatistics, ContainNoPeakMemoryWithoutHeapTracking)
{
    const SStats stats = RunMixed().stats;

    EXPECT_EQ(stats.peakMemoryMin, 0U);
    EXPECT_EQ(stats.peakMemoryMax, 0U);
    EXPECT_EQ(stats.peakMemorySum, 0U);
}

TEST_F(RunStatistics, TimeTheWholeRun)
{
    const SStats stats = RunMixed().stats;

    EXPECT_GE(stats.totalTime, stats.caseTimeSum);
}

TEST_F(RunStatistics, HoldLocalTimesOfStartAndEnd)
{
    const SStats stats = RunMixed().stats;

    const std::wregex format(LR"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2})");
    EXPECT_TRUE(std::regex_match(stats.startTime, format));
    EXPECT_TRUE(std::regex_match(stats.endTime, format));
    EXPECT_LE(stats.startTime, stats.endTime);
}

TEST_F(RunStatistics, OmitCasesThatNeverRan)
{
    const SRunResult result = RunCanceledAfterOneCase();

    EXPECT_EQ(result.stats.total.executed, 1U);
    EXPECT_EQ(result.stats.total.GetCount(ECaseRunResult::Ok), 1U);
    EXPECT_EQ(result.stats.total.GetCount(ECaseRunResult::Unknown), 0U);
    EXPECT_EQ(result.stats.caseTimeMin, result.cases.at(0).time);
    EXPECT_EQ(result.stats.caseTimeSum, result.cases.at(0).time);
}

TEST_F(RunStatistics, OmitUnitTestsWithoutExecutedCases)
{
    const SStats stats = RunCanceledAfterOneCase().stats;

    ASSERT_EQ(stats.unitTests.size(), 2U);
    EXPECT_EQ(stats.unitTests[1].executed, 0U);
    EXPECT_EQ(stats.unitTestsExecuted, 1U);
    EXPECT_EQ(stats.unitTestsPassed, 1U);
    EXPECT_EQ(stats.unitTestsPassedWithoutWarning, 1U);
}

TEST_F(RunStatistics, KeepInitialMinimaWhenNothingRan)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.checkCallback = [] { return true; };

    const SStats stats = Run(setup).stats;

    EXPECT_EQ(stats.caseTimeMin, c_Largest);
    EXPECT_EQ(stats.caseTimeMax, 0U);
    EXPECT_EQ(stats.peakMemoryMin, c_Largest);
    EXPECT_EQ(stats.unitTestsExecuted, 0U);
}

TEST_F(RunStatistics, CountEachRepetitionAsACase)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"})});
    setup.params.repetitions = 3;

    const SStats stats = Run(setup).stats;

    EXPECT_EQ(stats.total.executed, 3U);
    EXPECT_EQ(stats.unitTestsExecuted, 1U);
}

TEST(SStats, StartsEmpty)
{
    const SStats stats;

    EXPECT_EQ(stats.total.executed, 0U);
    EXPECT_EQ(stats.unitTestsExecuted, 0U);
    EXPECT_EQ(stats.caseTimeMin, c_Largest);
    EXPECT_EQ(stats.caseTimeMax, 0U);
    EXPECT_EQ(stats.caseTimeSum, 0U);
    EXPECT_EQ(stats.peakMemoryMin, c_Largest);
    EXPECT_EQ(stats.peakMemoryMax, 0U);
    EXPECT_TRUE(stats.startTime.empty());
    EXPECT_TRUE(stats.endTime.empty());
}

} // namespace
