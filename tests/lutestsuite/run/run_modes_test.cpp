// Tests that cases have the same outcomes in every mode.

#include <algorithm>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/modules/outcomes.h"
#include "tests/support/runtest.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;

struct SMode
{
    const char* name;
    std::uint32_t workers; ///< 0: cases run on the calling thread
    bool external;
    bool isolated;
};

constexpr SMode c_Modes[] = {
    {"MostWorkers", 256, false, false}, // first, so that RunParallelFasterModes can leave it out
    {"InProcess", 0, false, false},       {"OneWorker", 1, false, false}, {"FourWorkers", 4, false, false},
    {"External", 0, true, false},         {"Isolated", 0, true, true},    {"ExternalOnWorkers", 4, true, false},
    {"IsolatedOnWorkers", 4, true, true},
};

void setMode(const SMode& mode, LuTestSuiteSetup& setup)
{
    setup.params.parallel = mode.workers != 0;
    setup.params.workerThreads = mode.workers;
    setup.params.external = mode.external;
    setup.params.isolated = mode.isolated;
}

/// A unit test for each row of a table.
std::vector<LuTestSuite::SUnitTest> makeTable(std::span<const models::SOutcome> outcomes)
{
    std::vector<LuTestSuite::SUnitTest> unitTests;
    for (const models::SOutcome& outcome : outcomes)
    {
        unitTests.push_back(MakeUnitTest(outcome.className, {outcome.caseName}));
    }
    return unitTests;
}

/// Expects the messages of the case. If the case ended its process, the reason follows them.
void expectMessages(const SCaseInfo& info, const models::SOutcome& expected)
{
    const bool hasEnded = info.processIndex >= 0 && info.messages.find(models::c_EndOfProcess) != std::wstring::npos;
    EXPECT_EQ(hasEnded, models::EndsProcess(expected));
    const std::wstring text =
        hasEnded ? info.messages.substr(0, info.messages.find(models::c_EndOfProcess)) : info.messages;
    EXPECT_EQ(LbEncoding::ToUtf8(text), LbEncoding::ToUtf8(expected.messages));
}

void expectTable(const SRunResult& result, std::span<const models::SOutcome> outcomes, const SMode& mode)
{
    ASSERT_EQ(result.cases.size(), outcomes.size());
    for (const SCaseInfo& info : result.cases)
    {
        const models::SOutcome& expected = outcomes[info.unitTest];
        SCOPED_TRACE(LbEncoding::ToUtf8(std::wstring(expected.className) + L":" + expected.caseName));
        EXPECT_EQ(info.result, expected.result);
        expectMessages(info, expected);
        EXPECT_TRUE(info.executed);
        EXPECT_EQ(info.threadIndex >= 0, mode.workers != 0);
        EXPECT_EQ(info.processIndex >= 0, mode.external);
    }
}

class RunParallelModes : public RunTest, public testing::WithParamInterface<SMode>
{
};

TEST_P(RunParallelModes, MatchTheTableOfOutcomes)
{
    LuTestSuiteSetup setup = MakeSetup(makeTable(models::c_Outcomes));
    setMode(GetParam(), setup);

    expectTable(Run(setup), models::c_Outcomes, GetParam());
}

/// Tests with cases that end their process or never return.
class RunParallelCrashes : public RunParallelModes
{
};

TEST_P(RunParallelCrashes, MatchTheTableOfOutcomes)
{
    LuTestSuiteSetup setup = MakeSetup(makeTable(models::c_CrashOutcomes));
    setup.dlls.emplace_back(models::c_CrashModule);
    setMode(GetParam(), setup);
    for (std::size_t row = 0; row < setup.unitTests.size(); ++row)
    {
        // Only cases that hang may reach a limit, even on a busy machine.
        const bool hangs = models::c_CrashOutcomes[row].result == ECaseRunResult::TimeOut;
        setup.unitTests[row].cases[0].parameters[L"TimeOutSec"] = hangs ? 1U : LuTestSuiteRun::c_NoLimit;
    }

    expectTable(Run(setup), models::c_CrashOutcomes, GetParam());
}

/// Tests the parallel modes except the one whose threads take seconds to start.
class RunParallelFasterModes : public RunParallelModes
{
};

TEST_P(RunParallelFasterModes, CallBackOnceForEachCase)
{
    LuTestSuiteSetup setup =
        MakeSetup({MakeUnitTest(L"CPassedModel", {L"eins"}), MakeUnitTest(L"CFailedModel", {L"allein"})});
    setup.params.repetitions = 5;
    setMode(GetParam(), setup);
    std::map<ECaseRunResult, int> counts;
    setup.resultCallback = [&counts](ECaseRunResult result) { ++counts[result]; };

    Run(setup);

    EXPECT_EQ(counts, (std::map<ECaseRunResult, int>{{ECaseRunResult::Ok, 5}, {ECaseRunResult::Error, 5}}));
}

TEST_P(RunParallelFasterModes, DoNotRunACaseWhoseNameIsTooLong)
{
    LuTestSuiteSetup setup =
        MakeSetup({MakeUnitTest(std::wstring(1024, L'K'), {L"Fall"}), MakeUnitTest(L"CPassedModel", {L"eins"})});
    setMode(GetParam(), setup);

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Unknown);
    EXPECT_EQ(result.cases.at(0).processIndex, -1);
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
}

TEST_P(RunParallelFasterModes, CutMessagesAtTheirLimit)
{
    LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CLongMessageModel", {L"über der Grenze"})});
    setMode(GetParam(), setup);

    const std::wstring messages = Run(setup).cases.at(0).messages;

    EXPECT_EQ(messages.size(), 1'048'575U);
    EXPECT_EQ(messages.substr(messages.size() - 2), L"ab");
}

std::string getModeName(const testing::TestParamInfo<SMode>& mode)
{
    return mode.param.name;
}

INSTANTIATE_TEST_SUITE_P(Modes, RunParallelModes, testing::ValuesIn(c_Modes), getModeName);
INSTANTIATE_TEST_SUITE_P(Modes, RunParallelCrashes,
                         testing::ValuesIn(std::ranges::find_if(c_Modes, &SMode::external), std::end(c_Modes)),
                         getModeName);
INSTANTIATE_TEST_SUITE_P(Modes, RunParallelFasterModes, testing::ValuesIn(std::begin(c_Modes) + 1, std::end(c_Modes)),
                         getModeName);

} // namespace
