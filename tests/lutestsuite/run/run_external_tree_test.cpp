// The end of processes that were started by cases in child processes.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/externalruntest.h"
#include "tests/support/probe.h"
#include "tests/support/scopedenvironment.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SRunResult;

class RunExternalTree : public ExternalRunTest
{
protected:
    /// Runs a case that forks. The fork returns from the case while the next case runs, and must then end.
    void ExpectCopyToEndWith(const std::wstring& caseName)
    {
        const SRunResult result = Run(MakeCrash({caseName, L"erwartet Kopie", L"nachher"}));

        EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok);
        EXPECT_EQ(result.cases.at(0).messages, L"");
        EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
        EXPECT_EQ(result.cases.at(1).messages, L"\t\tINFO:  Ende der Kopie\n");
        EXPECT_EQ(result.cases.at(2).result, ECaseRunResult::Ok);
    }

    CProbeLine m_line;
    const ScopedEnvironmentVariable m_environmentVariable{L"LUTESTSUITE_TEST_LINE", m_line.GetName()};
};

TEST_F(RunExternalTree, DoesNotDelayTheTimeOut)
{
    constexpr double c_Longest = 2.1;
    double delay = c_Longest;
    bool isStarted = false;
    // Repeats the test with longer limits, because on a busy machine the processes start and end late.
    for (const std::uint32_t timeOut : {2U, 6U, 20U})
    {
        LuTestSuiteSetup setup = MakeCrash({L"startet Prozesse"});
        setup.params.timeOutSec = timeOut;
        const auto start = std::chrono::steady_clock::now();

        EXPECT_EQ(Run(setup).cases.at(0).result, ECaseRunResult::TimeOut);

        delay = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() - timeOut;
        isStarted = m_line.IsReady();
        EXPECT_TRUE(m_line.IsGone());
        if (isStarted && delay < c_Longest)
        {
            break;
        }
    }
    EXPECT_TRUE(isStarted);
    EXPECT_LT(delay, c_Longest);
}

TEST_F(RunExternalTree, EndsWithAnIsolatedCaseThatLeavesItBehind)
{
    LuTestSuiteSetup setup = MakeCrash({L"startet Prozesse und endet"});
    setup.params.isolated = true;

    EXPECT_EQ(Run(setup).cases.at(0).result, ECaseRunResult::Ok);

    EXPECT_TRUE(m_line.WaitReady());
    EXPECT_TRUE(m_line.IsGone());
}

TEST_F(RunExternalTree, EndsForksThatReturnFromACase)
{
    ExpectCopyToEndWith(L"Kopie kehrt zurück");
}

TEST_F(RunExternalTree, EndsForksThatLeaveACaseByAnException)
{
    ExpectCopyToEndWith(L"Kopie wirft");
}

/// The parameter is a case that leaves a process behind in another session; it then returns, exits, or hangs on exit.
class RunExternalDaemons : public RunExternalTree, public testing::WithParamInterface<const wchar_t*>
{
};

TEST_P(RunExternalDaemons, EndWithTheRun)
{
    const SRunResult result = Run(MakeCrash({GetParam(), L"nachher"}));

    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
    EXPECT_TRUE(m_line.WaitReady());
    EXPECT_TRUE(m_line.IsGone());
}

TEST_P(RunExternalDaemons, EndWithAnIsolatedCase)
{
    LuTestSuiteSetup setup = MakeCrash({GetParam(), L"nachher"});
    setup.params.isolated = true;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
    EXPECT_TRUE(m_line.WaitReady());
    EXPECT_TRUE(m_line.IsGone());
}

INSTANTIATE_TEST_SUITE_P(Cases, RunExternalDaemons,
                         testing::Values(L"hinterlässt Prozesse", L"hinterlässt Prozesse und endet",
                                         L"hinterlässt Prozesse und endet nicht"));

/// The parameter is a case that starts processes and sleeps.
class RunExternalTreeOf : public RunExternalTree, public testing::WithParamInterface<const wchar_t*>
{
};

TEST_P(RunExternalTreeOf, EndsAtTheTimeOut)
{
    bool isStarted = false;
    // On a busy machine the processes may need more time to start.
    for (std::uint32_t timeOut = 1; !isStarted && timeOut < 30; timeOut *= 5)
    {
        LuTestSuiteSetup setup = MakeCrash({GetParam()});
        setup.params.timeOutSec = timeOut;

        EXPECT_EQ(Run(setup).cases.at(0).result, ECaseRunResult::TimeOut);

        isStarted = m_line.IsReady();
    }
    EXPECT_TRUE(isStarted);
    EXPECT_TRUE(m_line.IsGone());
}

TEST_P(RunExternalTreeOf, EndsWhenTheRunIsCanceled)
{
    LuTestSuiteSetup setup = MakeCrash({GetParam()});
    setup.checkCallback = [this] { return m_line.IsReady(); };

    EXPECT_EQ(Run(setup).cases.at(0).result, ECaseRunResult::Canceled);

    EXPECT_TRUE(m_line.IsGone());
}

TEST_P(RunExternalTreeOf, EndsWhenBusyWorkersAreCanceled)
{
    LuTestSuiteSetup setup = MakeCrash({GetParam()});
    setup.params.parallel = true;
    setup.params.workerThreads = 3;
    setup.params.repetitions = 9;
    bool isCanceled = false;
    // Only one thread at a time calls this and queries the processes.
    setup.checkCallback = [this, &isCanceled] { return isCanceled = isCanceled || m_line.IsReady(); };

    const SRunResult result = Run(setup);

    // On a busy machine the first processes may be ready before each worker has a case.
    const auto canceled = std::ranges::count(result.cases, ECaseRunResult::Canceled, &SCaseInfo::result);
    EXPECT_GE(canceled, 1);
    EXPECT_LE(canceled, 3);
    EXPECT_EQ(std::ranges::count(result.cases, ECaseRunResult::Unknown, &SCaseInfo::result), 9 - canceled);
    // All processes share the line, so any process that is left would answer.
    EXPECT_TRUE(m_line.IsGone());
}

INSTANTIATE_TEST_SUITE_P(Cases, RunExternalTreeOf,
                         testing::Values(L"startet Prozesse", L"startet Ausreißer", L"startet kopflose Prozesse"));

} // namespace
