#include "testing/lutestsuiterunner/model/runstate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "tests/lutestsuiterunner/runstatemaker.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using Runner::EAttemptEnd;
using Runner::EAttemptKind;
using Runner::EVerdict;

/// A state to which the test applies records one after another.
class RunnerRunState : public testing::Test, protected CRunStateMaker
{
protected:
    explicit RunnerRunState(Runner::SPlan plan = MakeSamplePlan()) : CRunStateMaker(std::move(plan)) {}

    const Runner::CRunState& m_state = Get();
};

TEST_F(RunnerRunState, IsGreenWhenEveryCaseHasPassedAndTheRunHasEnded)
{
    EXPECT_FALSE(m_state.IsGreen());
    RunRest();

    EXPECT_TRUE(m_state.IsGreen());
    EXPECT_EQ(m_state.CountVerdicts().passed, 6U);
    EXPECT_EQ(m_state.GetTotalTime(), 4'000'000'000U);
}

TEST_F(RunnerRunState, KeepsThePassOfTheFirstAttempt)
{
    RunRest();
    BeginJournal(2);
    EXPECT_THROW(RunCase(0, ECaseRunResult::Ok, 3), LbException);
    RunCase(1, ECaseRunResult::Error, 2, EAttemptKind::Retry);

    EXPECT_EQ(m_state.GetVerdict(1), EVerdict::Passed);
}

TEST_F(RunnerRunState, ReportsTheAttemptThatPassed)
{
    RunCase(1, ECaseRunResult::Error);
    RunCase(1, ECaseRunResult::Different, 2, EAttemptKind::Retry);
    EXPECT_EQ(m_state.GetVerdict(1), EVerdict::Failed);
    EXPECT_EQ(m_state.GetReported(1)->result.attempt, 1U);
    RunCase(1, ECaseRunResult::Ok, 3, EAttemptKind::Retry);

    EXPECT_EQ(m_state.GetVerdict(1), EVerdict::Flaky);
    EXPECT_EQ(m_state.GetReported(1)->result.attempt, 3U);
    EXPECT_EQ(m_state.CountVerdicts().flaky, 1U);
}

TEST_F(RunnerRunState, KeepsTheFailureOfACaseThatPassesAlone)
{
    RunCase(4, ECaseRunResult::Ok);
    RunCase(2, ECaseRunResult::Error);
    RunCase(5, ECaseRunResult::Ok);
    RunCase(2, ECaseRunResult::Ok, 2, EAttemptKind::Confirm);

    EXPECT_EQ(m_state.GetVerdict(2), EVerdict::FailedShared);
    EXPECT_EQ(m_state.GetReported(2)->result.attempt, 1U);
    EXPECT_THAT(m_state.GetPredecessors(m_state.GetAttempts(2)[0]), testing::ElementsAre(4));
    EXPECT_EQ(m_state.CountVerdicts().failed, 1U);
}

TEST_F(RunnerRunState, FindsTheCasesBeforeTheCaseThatEndedTheHost)
{
    RunCase(4, ECaseRunResult::Ok);
    Apply(MakeStart(2));
    BeginJournal(2);
    RunCase(5, ECaseRunResult::Ok);
    Runner::SCaseEnded ended = MakeEnd(2, ECaseRunResult::Unknown);
    ended.end = Runner::EAttemptEnd::HostEnded;
    Apply(ended);

    EXPECT_THAT(m_state.GetPredecessors(m_state.GetAttempts(2)[0]), testing::ElementsAre(4));
    EXPECT_TRUE(m_state.GetPredecessors(m_state.GetAttempts(5)[0]).empty());
}

Runner::SPlan makeExternalPlan(bool isIsolated)
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.params.external = true;
    plan.params.isolated = isIsolated;
    return plan;
}

/// Every child has the same process id.
class RunnerRunStateOfChildren : public RunnerRunState
{
protected:
    explicit RunnerRunStateOfChildren(bool isIsolated = false) : RunnerRunState(makeExternalPlan(isIsolated)) {}

    void RunInChild(std::uint32_t caseIndex, Runner::EAttemptEnd end, std::uint32_t attempt = 1)
    {
        Runner::SCaseEnded ended = MakeEnd(caseIndex, ECaseRunResult::Error, attempt);
        ended.processId = 4712;
        ended.end = end;
        RunCase(ended, attempt == 1 ? EAttemptKind::First : EAttemptKind::Retry);
    }
};

TEST_F(RunnerRunStateOfChildren, FindsNoCasesOfAnEarlierChildWithTheSameProcessId)
{
    RunInChild(2, EAttemptEnd::Returned);
    RunInChild(3, EAttemptEnd::ChildEnded);
    RunInChild(4, EAttemptEnd::Returned);
    RunInChild(5, EAttemptEnd::Returned);
    RunInChild(3, EAttemptEnd::Returned, 2);
    RunInChild(5, EAttemptEnd::Returned, 2);

    EXPECT_THAT(m_state.GetPredecessors(m_state.GetAttempts(3)[0]), testing::ElementsAre(2));
    EXPECT_THAT(m_state.GetPredecessors(m_state.GetAttempts(5)[0]), testing::ElementsAre(4));
    EXPECT_THAT(m_state.GetPredecessors(m_state.GetAttempts(5)[1]), testing::ElementsAre(3));
}

class RunnerRunStateOfIsolatedCases : public RunnerRunStateOfChildren
{
protected:
    RunnerRunStateOfIsolatedCases() : RunnerRunStateOfChildren(/*isIsolated*/ true) {}
};

TEST_F(RunnerRunStateOfIsolatedCases, FindsNoEarlierCasesInTheirProcess)
{
    RunInChild(2, EAttemptEnd::Returned);
    RunInChild(4, EAttemptEnd::Returned);

    EXPECT_TRUE(m_state.GetPredecessors(m_state.GetAttempts(4)[0]).empty());
}

TEST_F(RunnerRunState, FindsNoCasesBeforeACaseOutsideItsHost)
{
    constexpr std::uint64_t c_Child = 4712;
    for (const std::uint32_t index : {2U, 4U})
    {
        Runner::SCaseEnded ended = MakeEnd(index, ECaseRunResult::Error);
        ended.processId = c_Child;
        RunCase(ended);
    }

    EXPECT_TRUE(m_state.GetPredecessors(m_state.GetAttempts(4)[0]).empty());
}

TEST_F(RunnerRunState, ListsRunningAndMissingCases)
{
    Apply(MakeStart(3));
    RunCase(0, ECaseRunResult::Ok);

    EXPECT_EQ(m_state.GetOpenCases(), std::vector<std::uint32_t>{3});
    EXPECT_EQ(m_state.GetMissingCases(), (std::vector<std::uint32_t>{1, 2, 3, 4, 5}));
}

TEST_F(RunnerRunState, AllowsALaterJournalToRepeatAnInterruptedAttempt)
{
    Apply(MakeStart(3));
    EXPECT_THROW(Apply(MakeStart(3)), LbException);
    BeginJournal(2);
    RunCase(3, ECaseRunResult::Ok);

    EXPECT_EQ(m_state.GetVerdict(3), EVerdict::Passed);
    EXPECT_TRUE(m_state.GetOpenCases().empty());
}

TEST_F(RunnerRunState, KeepsTheVerdictOfTheFirstOfTwoHosts)
{
    RunCase(3, ECaseRunResult::Ok);
    BeginJournal(2);
    RunCase(3, ECaseRunResult::Error);

    EXPECT_EQ(m_state.GetVerdict(3), EVerdict::Passed);
    ASSERT_EQ(m_state.GetAttempts(3).size(), 1U);
    EXPECT_EQ(m_state.GetAttempts(3)[0].duplicates, 1U);
}

TEST_F(RunnerRunState, KeepsTheVerdictOfACaseWhoseHostCrashesLater)
{
    RunCase(3, ECaseRunResult::Ok);
    BeginJournal(2);
    Runner::SCaseEnded ended = MakeEnd(3, ECaseRunResult::Unknown);
    ended.end = Runner::EAttemptEnd::HostEnded;
    Apply(ended);

    EXPECT_EQ(m_state.GetVerdict(3), EVerdict::Passed);
}

TEST_F(RunnerRunState, AllowsALaterJournalToEndTheAttemptThatEndedTheHost)
{
    Apply(MakeStart(3));
    BeginJournal(2);
    Runner::SCaseEnded ended = MakeEnd(3, ECaseRunResult::Unknown);
    ended.end = Runner::EAttemptEnd::HostEnded;
    Apply(ended);

    EXPECT_EQ(m_state.GetVerdict(3), EVerdict::Failed);
}

TEST_F(RunnerRunState, AcceptsTheEndOfACanceledAttemptFromALaterJournal)
{
    Apply(MakeStart(3));
    Runner::SCaseEnded canceled = MakeEnd(3, ECaseRunResult::Canceled);
    canceled.end = Runner::EAttemptEnd::Canceled;
    Apply(canceled);
    EXPECT_THROW(Apply(canceled), LbException);
    BeginJournal(2);
    Runner::SCaseEnded ended = MakeEnd(3, ECaseRunResult::Unknown);
    ended.end = Runner::EAttemptEnd::HostEnded;
    Apply(ended);

    EXPECT_EQ(m_state.GetVerdict(3), EVerdict::Failed);
    EXPECT_EQ(m_state.GetAttempts(3)[0].ended.journal, 2U);
}

TEST_F(RunnerRunState, UsesTheEarliestStartTimeOfItsJournals)
{
    const auto begin = [this](std::uint32_t journal, const wchar_t* time) {
        return std::pair(Runner::SRecordPlace{journal, 1},
                         Runner::SJournalBegun{"", m_state.GetPlan().cases.size(), journal, {}, 1, {}, time});
    };
    Runner::CRunState state(MakeSamplePlan());
    for (const auto& [place, begun] : {begin(1, L"2024-01-02 03:04:05"), begin(2, L"2024-01-02 03:04:01"),
                                       begin(3, L"2024-01-02 03:04:09"), begin(4, L"")})
    {
        state.Apply(place, begun);
    }

    EXPECT_EQ(state.GetStartTime(), L"2024-01-02 03:04:01");
}

TEST_F(RunnerRunState, GivesACanceledAttemptNoVerdict)
{
    Apply(MakeStart(3));
    Runner::SCaseEnded ended = MakeEnd(3, ECaseRunResult::Canceled);
    ended.end = Runner::EAttemptEnd::Canceled;
    Apply(ended);

    EXPECT_EQ(m_state.GetVerdict(3), EVerdict::Missing);
    EXPECT_EQ(m_state.GetReported(3)->result.info.result, ECaseRunResult::Canceled);
}

TEST_F(RunnerRunState, RefusesContradictingRecords)
{
    RunCase(0, ECaseRunResult::Ok);

    EXPECT_THROW(Apply(MakeStart(0)), LbException);
    EXPECT_THROW(Apply(MakeEnd(0, ECaseRunResult::Ok)), LbException);
    EXPECT_THROW(Apply(MakeEnd(1, ECaseRunResult::Ok)), LbException);
    EXPECT_THROW(Apply(MakeStart(1, 2)), LbException);
    EXPECT_THROW(Apply(MakeStart(1, 0)), LbException);
    EXPECT_THROW(Apply(MakeStart(6)), LbException);
    EXPECT_EQ(m_state.GetAttempts(0).size(), 1U);
    EXPECT_TRUE(m_state.GetAttempts(1).empty());
}

TEST(RunnerRunStateOrder, RequiresAscendingJournalsAndRecords)
{
    Runner::CRunState state(MakeSamplePlan());
    state.Apply({2, 5}, MakeStart(0));

    EXPECT_THROW(state.Apply({2, 5}, MakeStart(1)), LbException);
    EXPECT_THROW(state.Apply({1, 9}, MakeStart(1)), LbException);
    state.Apply({3, 1}, MakeStart(1));
    EXPECT_EQ(state.GetAttempts(1).size(), 1U);
}

TEST_F(RunnerRunState, IsRedIfTheLastJournalHasAProblemOrCancellation)
{
    Apply(Runner::SRunProblem{L"Das Modul fehlt"});
    RunRest();
    EXPECT_FALSE(m_state.IsGreen());

    BeginJournal(2);
    Apply(Runner::SRunCanceled{L"SIGTERM", 1});
    Apply(Runner::SRunFinished{L"", 5});
    EXPECT_FALSE(m_state.IsGreen());
    EXPECT_EQ(m_state.GetTotalTime(), 4'000'000'005U);

    BeginJournal(3);
    Apply(Runner::SRunFinished{L"", 5});
    EXPECT_TRUE(m_state.IsGreen());
}

Runner::SPlan makePlanWithMarks()
{
    Runner::SPlan plan = MakeSamplePlan();
    plan.cases[0].isInShard = false;
    plan.cases[1].isQuarantined = true;
    plan.rules.isFlakyAllowed = true;
    return plan;
}

class RunnerRunStateWithMarks : public RunnerRunState
{
protected:
    RunnerRunStateWithMarks() : RunnerRunState(makePlanWithMarks()) {}
};

TEST_F(RunnerRunStateWithMarks, IsGreenDespiteQuarantinedAndAllowedFlakyCases)
{
    EXPECT_THROW(Apply(MakeStart(0)), LbException);
    RunCase(1, ECaseRunResult::Error);
    RunCase(2, ECaseRunResult::Error);
    RunCase(2, ECaseRunResult::Ok, 2, EAttemptKind::Retry);
    RunRest();

    EXPECT_TRUE(m_state.IsGreen());
    EXPECT_EQ(m_state.CountVerdicts().planned, 5U);
    EXPECT_EQ(m_state.CountVerdicts().quarantinedFailed, 1U);
    EXPECT_EQ(m_state.CountVerdicts().failed, 0U);
}

} // namespace
