// Tests of the records of runs.

#include "testing/lutestsuite/lutestsuiterun.h"

#include <cstddef>
#include <limits>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SParams;
using LuTestSuiteRun::SStats;

constexpr std::uint64_t c_Largest = std::numeric_limits<std::uint64_t>::max();

TEST(ECaseRunResult, HasFixedValuesOf32Bits)
{
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::Ok), 0U);
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::Error), 1U);
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::Exception), 2U);
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::NoInput), 3U);
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::Different), 4U);
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::Unknown), 5U);
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::NoMatchingCase), 6U);
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::Canceled), 7U);
    EXPECT_EQ(static_cast<std::uint32_t>(ECaseRunResult::TimeOut), 8U);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<ECaseRunResult>, std::uint32_t>));
}

TEST(ETargetSystem, IsUnsigned)
{
    EXPECT_TRUE(std::is_unsigned_v<std::underlying_type_t<LuTestSuiteRun::ETargetSystem>>);
}

TEST(SParams, StartsWithElevenFlagsInOrder)
{
    EXPECT_EQ(offsetof(SParams, trackHeap), 0U);
    EXPECT_EQ(offsetof(SParams, dumpHeap), 1U);
    EXPECT_EQ(offsetof(SParams, reportMemLeak), 2U);
    EXPECT_EQ(offsetof(SParams, external), 3U);
    EXPECT_EQ(offsetof(SParams, isolated), 4U);
    EXPECT_EQ(offsetof(SParams, assertDialog), 5U);
    EXPECT_EQ(offsetof(SParams, verbose), 6U);
    EXPECT_EQ(offsetof(SParams, deVerboseOutput), 7U);
    EXPECT_EQ(offsetof(SParams, deDebuggingSerialization), 8U);
    EXPECT_EQ(offsetof(SParams, dePredefinedBreakPoints), 9U);
    EXPECT_EQ(offsetof(SParams, parallel), 10U);
}

TEST(SParams, HoldsItsNumbersBehindTheFlagsInOrder)
{
    EXPECT_EQ(offsetof(SParams, workerThreads), 12U);
    EXPECT_EQ(offsetof(SParams, repetitions), 16U);
    EXPECT_EQ(offsetof(SParams, timeOutSec), 20U);
    EXPECT_EQ(offsetof(SParams, testCaseMax), 24U);
    EXPECT_EQ(offsetof(SParams, breakAllocId), 32U);
    EXPECT_EQ(offsetof(SParams, breakAllocSize), 40U);
}

TEST(SParams, EndsWithAFlagPaddedToEightBytes)
{
    EXPECT_EQ(offsetof(SParams, repetitionsGiven), 48U);
    EXPECT_EQ(sizeof(SParams), 56U);
    EXPECT_TRUE((std::is_same_v<decltype(SParams::repetitionsGiven), bool>));
}

TEST(SParams, CanBeCopiedByteForByte)
{
    EXPECT_TRUE(std::is_trivially_copyable_v<SParams>);
}

TEST(SCaseInfo, StartsWithoutAVerdict)
{
    const SCaseInfo info;

    EXPECT_EQ(info.unitTest, 0U);
    EXPECT_EQ(info.testCase, 0U);
    EXPECT_EQ(info.repetition, 0U);
    EXPECT_EQ(info.result, ECaseRunResult::Unknown);
    EXPECT_EQ(info.memoryGrowth, 0U);
    EXPECT_EQ(info.allocations, 0U);
    EXPECT_EQ(info.peakMemory, 0U);
    EXPECT_EQ(info.time, 0U);
    EXPECT_EQ(info.messages, L"");
    EXPECT_FALSE(info.warning);
    EXPECT_FALSE(info.executed);
    EXPECT_EQ(info.threadIndex, -1);
    EXPECT_EQ(info.processIndex, -1);
}

TEST(SStats, StartsWithNothingCounted)
{
    const SStats stats;

    EXPECT_THAT(stats.total.results, testing::Each(0U));
    EXPECT_EQ(stats.total.executed, 0U);
    EXPECT_EQ(stats.total.warnings, 0U);
    EXPECT_TRUE(stats.unitTests.empty());
    EXPECT_EQ(stats.unitTestsExecuted, 0U);
    EXPECT_EQ(stats.unitTestsPassed, 0U);
    EXPECT_EQ(stats.unitTestsPassedWithoutWarning, 0U);
}

TEST(SStats, StartsWithTheLargestMinimaAndNoSums)
{
    const SStats stats;

    EXPECT_EQ(stats.caseTimeMin, c_Largest);
    EXPECT_EQ(stats.caseTimeMax, 0U);
    EXPECT_EQ(stats.caseTimeSum, 0U);
    EXPECT_EQ(stats.totalTime, 0U);
    EXPECT_EQ(stats.peakMemoryMin, c_Largest);
    EXPECT_EQ(stats.peakMemoryMax, 0U);
    EXPECT_EQ(stats.peakMemorySum, 0U);
    EXPECT_EQ(stats.startTime, L"");
    EXPECT_EQ(stats.endTime, L"");
}

TEST(SCounts, HasACountForEachOfNineResults)
{
    SStats::SCounts counts;
    counts.results[8] = 3;

    EXPECT_EQ(std::size(counts.results), 9U);
    EXPECT_EQ(counts.GetCount(ECaseRunResult::TimeOut), 3U);
    EXPECT_EQ(counts.GetCount(ECaseRunResult::Ok), 0U);
}

TEST(SCallbacks, StartsEmpty)
{
    const LuTestSuiteRun::SCallbacks callbacks;

    EXPECT_THROW(callbacks.isCanceled(), std::bad_function_call);
    EXPECT_THROW(callbacks.caseFinished(ECaseRunResult::Ok), std::bad_function_call);
}

TEST(STestCase, HasKindOneWithADataSetFile)
{
    LuTestSuite::STestCase testCase;
    testCase.dataSetFile = L"a.txt";

    EXPECT_EQ(testCase.GetKind(), 1U);
}

TEST(STestCase, HasKindZeroWithoutADataSetFile)
{
    LuTestSuite::STestCase testCase;
    testCase.name = L"benannt";

    EXPECT_EQ(testCase.GetKind(), 0U);
    EXPECT_TRUE((std::is_same_v<decltype(testCase.GetKind()), std::uint32_t>));
}

} // namespace
