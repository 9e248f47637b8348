// Child processes that cannot serve another case, or do not exit.

#include <chrono>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/externalruntest.h"
#include "tests/support/hostchildren.h"
#include "tests/support/probe.h"
#include "tests/support/scopedenvironment.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SRunResult;

using RunExternalLeaving = ExternalRunTest;

TEST_F(RunExternalLeaving, EndsAProcessThatHasChangedItsGroup)
{
    LuTestSuiteSetup setup = MakeCrash({L"fremde Prozessgruppe", L"nachher"});
    setup.params.timeOutSec = 4;
    const auto start = std::chrono::steady_clock::now();

    const SRunResult result = Run(setup);

    // The case would end by itself after a minute.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::TimeOut);
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
}

TEST_F(RunExternalLeaving, StartsAnotherProcessWhenACaseHasUsedAllMemory)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers end the process when there is no memory";
#endif
    const SRunResult result = Run(MakeCrash({L"vorher", L"aller Speicher", L"vorher", L"nachher"}));

    if (result.cases.at(1).result == ECaseRunResult::NoInput)
    {
        GTEST_SKIP() << "the system does not limit memory";
    }
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Exception);
    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex);
    EXPECT_EQ(result.cases.at(2).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(2).processIndex, result.cases.at(0).processIndex + 1);
    EXPECT_EQ(result.cases.at(3).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(3).processIndex, result.cases.at(2).processIndex);
}

TEST_F(RunExternalLeaving, StartsAnotherProcessAfterAnIdleProcessHasExited)
{
    CProbeLine line;
    const ScopedEnvironmentVariable environment(L"LUTESTSUITE_TEST_LINE", line.GetName());
    LuTestSuiteSetup setup = MakeCrash({L"meldet das Ende des Prozesses", L"nachher"});
    bool hasLeft = false;
    setup.resultCallback = [&](ECaseRunResult) { hasLeft = hasLeft || line.WaitReady(); };

    const SRunResult result = Run(setup);

    EXPECT_TRUE(hasLeft);
    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex + 1);
}

TEST_F(RunExternalLeaving, LosesNoCaseWhileAnIdleProcessExits)
{
    LuTestSuiteSetup setup = MakeCrash({L"vorher", L"nachher"});
    // An idle child exits after 5 s. After 5003 ms it may be waiting, exiting or gone.
    setup.resultCallback = [](ECaseRunResult) { std::this_thread::sleep_for(std::chrono::milliseconds(5003)); };

    const SRunResult result = Run(setup);

    const std::int32_t first = result.cases.at(0).processIndex;
    EXPECT_GE(first, 0);
    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
    EXPECT_TRUE(result.cases.at(1).processIndex == first || result.cases.at(1).processIndex == first + 1)
        << result.cases.at(1).processIndex - first;
}

/// The parameter is true if each case has its own process.
class RunExternalExitHandlers : public RunExternalLeaving, public testing::WithParamInterface<bool>
{
};

TEST_P(RunExternalExitHandlers, HaveRunWhenTheRunHasEnded)
{
    CProbeLine line;
    const ScopedEnvironmentVariable environment(L"LUTESTSUITE_TEST_LINE", line.GetName());
    LuTestSuiteSetup setup = MakeCrash({L"meldet das Ende des Prozesses"});
    setup.params.isolated = GetParam();

    EXPECT_EQ(Run(setup).cases.at(0).result, ECaseRunResult::Ok);

    EXPECT_TRUE(line.IsReady());
    EXPECT_EQ(CountHostChildren(), 0);
}

TEST_P(RunExternalExitHandlers, AreKilledWhenTheyHang)
{
    LuTestSuiteSetup setup = MakeCrash({L"schläft am Ende des Prozesses"});
    setup.params.isolated = GetParam();
    setup.params.repetitions = 20;
    const auto start = std::chrono::steady_clock::now();

    for (const LuTestSuiteRun::SCaseInfo& info : Run(setup).cases)
    {
        EXPECT_EQ(info.result, ECaseRunResult::Ok);
    }

    // Each of the 20 processes would end by itself after a minute.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_EQ(CountHostChildren(), 0);
}

INSTANTIATE_TEST_SUITE_P(Modes, RunExternalExitHandlers, testing::Bool());

/// The parameter is a case that hangs or crashes when its process exits.
class RunExternalLeavingAfter : public RunExternalLeaving, public testing::WithParamInterface<const wchar_t*>
{
};

TEST_P(RunExternalLeavingAfter, RunsTheNextCaseInAnotherProcess)
{
    CProbeLine line;
    const ScopedEnvironmentVariable environment(L"LUTESTSUITE_TEST_LINE", line.GetName());
    LuTestSuiteSetup setup = MakeCrash({GetParam(), L"nachher"});
    // The limit includes the start of a process, which takes seconds on a busy machine.
    setup.params.timeOutSec = 20;
    bool exits = false;
    setup.resultCallback = [&](ECaseRunResult) { exits = exits || line.WaitReady(); };

    const SRunResult result = Run(setup);

    EXPECT_TRUE(exits);
    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).processIndex, result.cases.at(0).processIndex + 1);
}

INSTANTIATE_TEST_SUITE_P(Cases, RunExternalLeavingAfter,
                         testing::Values(L"schläft am Ende des Prozesses", L"stürzt am Ende des Prozesses ab"));

} // namespace
