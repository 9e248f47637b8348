#include "testing/lutestsuiterunner/reports/opencases.h"

#include <gtest/gtest.h>

#include "tests/lutestsuiterunner/runstatemaker.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Interrupted = std::map<std::uint32_t, std::wstring>;
using Cases = std::vector<std::uint32_t>;

TEST(RunnerOpenCases, HaveTheMessagesThatTheirHostPrintedWhenItCrashed)
{
    const ScopedFolder folder;
    folder.WriteFile(L"output/crash-2.txt", "Fehler: nur ein Test\n");
    CRunStateMaker run;
    run.Apply(MakeStart(0));
    run.RunCase(1, LuTestSuiteRun::ECaseRunResult::Ok);
    run.BeginJournal(2);
    run.Apply(MakeStart(3));

    const Runner::SOpenCases open = Runner::FindOpenCases(run.Get(), folder.GetPath(), false);

    EXPECT_EQ(open.interrupted, (Interrupted{{0U, L""}, {3U, L"Fehler: nur ein Test\n"}}));
    EXPECT_TRUE(open.running.empty());
}

TEST(RunnerOpenCases, AreRunningWhileTheRunIsInProgress)
{
    const ScopedFolder folder;
    CRunStateMaker run;
    run.Apply(MakeStart(0));

    const Runner::SOpenCases open = Runner::FindOpenCases(run.Get(), folder.GetPath(), true);

    EXPECT_TRUE(open.interrupted.empty());
    EXPECT_EQ(open.running, (Cases{0}));
    EXPECT_TRUE(open.Contains(0));
    EXPECT_FALSE(open.Contains(1));
}

TEST(RunnerOpenCases, IncludeThoseThatTheCancellationEnded)
{
    const ScopedFolder folder;
    CRunStateMaker run;
    Runner::SCaseEnded canceled = MakeEnd(2, LuTestSuiteRun::ECaseRunResult::Error);
    canceled.end = Runner::EAttemptEnd::Canceled;
    run.RunCase(0, LuTestSuiteRun::ECaseRunResult::Ok);
    run.RunCase(canceled);
    run.Apply(Runner::SRunCanceled{L"SIGTERM", 1});

    const Runner::SOpenCases open = Runner::FindOpenCases(run.Get(), folder.GetPath(), false);

    EXPECT_EQ(open.canceled, (Cases{2}));
    EXPECT_TRUE(open.Contains(2));
    EXPECT_TRUE(open.interrupted.empty());
    // The case is going to run again.
    EXPECT_EQ(Runner::FindOpenCases(run.Get(), folder.GetPath(), true).canceled, Cases());
}

TEST(RunnerOpenCases, CountAsRunningUntilADistributedRunEnds)
{
    const ScopedFolder folder;
    Runner::SPlan plan = MakeSamplePlan();
    plan.partCount = 2;
    CRunStateMaker run(plan);
    run.Apply(MakeStart(0));
    EXPECT_EQ(Runner::FindOpenCases(run.Get(), folder.GetPath(), false).running, (Cases{0}));

    run.Apply(Runner::SRunFinished{L"2024-01-02 03:04:09", 4});

    EXPECT_EQ(Runner::FindOpenCases(run.Get(), folder.GetPath(), false).interrupted, (Interrupted{{0U, L""}}));
}

} // namespace
