#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/journal/tail.h"
#include "tests/lutestsuiterunner/cluster/distributedrun.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;

class RunnerDistributedRun : public testing::Test
{
protected:
    std::unique_ptr<Runner::CRunState> Load() const { return Runner::LoadRun(m_run.GetFolder()); }

    /// The place of a shard's case in the whole.
    std::uint32_t GetWhole(std::uint32_t shard, std::uint32_t caseIndex) const
    {
        return Runner::ReadPlan(m_run.GetShardFolder(shard) + Runner::c_PlanName).part->indices[caseIndex];
    }

    const CPlayedRun m_run;
};

TEST_F(RunnerDistributedRun, CombinesItsShards)
{
    m_run.RunShard(1);
    m_run.RunShard(2);
    const auto state = Load();

    EXPECT_TRUE(state->IsGreen());
    EXPECT_EQ(state->CountVerdicts().planned, 6U);
    EXPECT_EQ(state->CountVerdicts().passed, 6U);
    EXPECT_EQ(state->GetEndTime(), CPlayedRun::sc_EndTime);
    EXPECT_EQ(state->GetTotalTime(), 10U);
}

TEST_F(RunnerDistributedRun, GivesVerdictsToTheCasesOfTheWhole)
{
    const auto writer = m_run.Join(2);
    CPlayedRun::RunCase(*writer, 0, ECaseRunResult::Error);
    const auto state = Load();

    const std::uint32_t failed = GetWhole(2, 0);
    EXPECT_EQ(state->GetVerdict(failed), Runner::EVerdict::Failed);
    EXPECT_EQ(state->CountVerdicts().missing, 5U);
}

TEST_F(RunnerDistributedRun, IsNotEndedWithoutAShard)
{
    m_run.RunShard(1);
    const auto state = Load();

    EXPECT_FALSE(state->IsEnded());
    EXPECT_EQ(state->GetProblems(), std::vector<std::wstring>{L"Teil 2 von 2 ist nicht beendet"});
}

TEST_F(RunnerDistributedRun, ReportsItsOwnProblemsAndThoseOfItsShards)
{
    m_run.RunShard(1);
    const auto writer = m_run.Join(2);
    writer->Write(Runner::SRunProblem{L"Auf dem Rechner x fehlt y"});
    writer->Write(Runner::SRunCanceled{L"SIGTERM", 1});
    Runner::CAppendFile(m_run.GetFolder() + Runner::c_ProblemsName).Append("Teil 2 wurde verloren\n");
    const auto state = Load();

    EXPECT_EQ(state->GetProblems(),
              (std::vector<std::wstring>{L"Teil 2 von 2 wurde abgebrochen: SIGTERM",
                                         L"Teil 2 von 2: Auf dem Rechner x fehlt y", L"Teil 2 wurde verloren"}));
}

TEST_F(RunnerDistributedRun, ForgetsProblemsThatALaterHostHasSolved)
{
    m_run.RunShard(1);
    m_run.Join(2)->Write(Runner::SRunProblem{L"Auf dem Rechner x fehlt y"});
    m_run.RunShard(2);

    EXPECT_TRUE(Load()->IsGreen());
}

TEST_F(RunnerDistributedRun, IsEndedThoughAnotherHostHasBegunAnEndedShard)
{
    m_run.RunShard(1);
    m_run.RunShard(2);
    m_run.Join(2)->Write(Runner::SRunProblem{L"Auf dem Rechner x fehlt y"});

    EXPECT_TRUE(Load()->IsGreen());
}

TEST_F(RunnerDistributedRun, CountsTheFirstOfTwoResults)
{
    m_run.RunShard(1);
    const auto slow = m_run.Join(2);
    slow->Write(MakeStart(0));
    const auto quick = m_run.Join(2);
    for (std::uint32_t index = 0; index < m_run.GetShards()[1].cases; ++index)
    {
        CPlayedRun::RunCase(*quick, index, index == 0 ? ECaseRunResult::Error : ECaseRunResult::Ok);
    }
    CPlayedRun::Finish(*quick);
    slow->Write(MakeEnd(0, ECaseRunResult::Ok));
    CPlayedRun::RunCase(*slow, 1);
    CPlayedRun::Finish(*slow);
    const auto state = Load();

    const std::uint32_t both = GetWhole(2, 0);
    EXPECT_TRUE(state->IsGreen());
    EXPECT_EQ(state->GetVerdict(both), Runner::EVerdict::Passed);
    EXPECT_EQ(state->GetAttempts(both)[0].duplicates, 1U);
    EXPECT_EQ(state->GetAttempts(GetWhole(2, 1))[0].duplicates, 1U);
    EXPECT_EQ(state->CountVerdicts().planned, 6U);
}

TEST_F(RunnerDistributedRun, CountsHostsThatDiedDuringACase)
{
    for (int host = 0; host < 3; ++host)
    {
        m_run.Join(1)->Write(MakeStart(0));
    }

    EXPECT_EQ(Load()->GetAttempts(GetWhole(1, 0))[0].lostHosts, 2U);
}

TEST_F(RunnerDistributedRun, RefusesAShardOfAnotherRun)
{
    const CPlayedRun other;
    const std::wstring path = m_run.GetShardFolder(2) + Runner::c_PlanName;
    EXPECT_TRUE(LbFileSystem::CopyContent(other.GetShardFolder(2) + Runner::c_PlanName, path));

    EXPECT_THROW(Load(), LbException);
}

TEST_F(RunnerDistributedRun, RefusesACaseThatTheShardDoesNotHave)
{
    m_run.Join(1)->Write(MakeStart(100));

    EXPECT_THROW(Load(), LbException);
}

class RunnerTail : public RunnerDistributedRun
{
protected:
    Runner::CRunTail m_tail{m_run.GetShardFolder(1), m_run.GetShards()[0].places};
};

TEST_F(RunnerTail, ReportsTheProgressOfARunThatIsBeingWritten)
{
    m_tail.Poll();
    EXPECT_EQ(m_tail.GetJournalCount(), 0U);
    const auto writer = m_run.Join(1);
    CPlayedRun::RunCase(*writer, 0, ECaseRunResult::Error);
    writer->Write(MakeStart(1));
    m_tail.Poll();
    EXPECT_EQ(m_tail.GetDone(), 1U);
    EXPECT_EQ(m_tail.GetFailed(), 1U);
    writer->Write(MakeEnd(1, ECaseRunResult::Ok));
    writer->Write(MakeStart(0, 2, Runner::EAttemptKind::Retry));
    writer->Write(MakeEnd(0, ECaseRunResult::Ok, 2));
    m_tail.Poll();
    m_tail.Poll();

    EXPECT_EQ(m_tail.GetDone(), 2U);
    EXPECT_EQ(m_tail.GetFailed(), 0U);
    EXPECT_FALSE(m_tail.HasEnded());
    CPlayedRun::Finish(*writer);
    m_tail.Poll();
    EXPECT_TRUE(m_tail.HasEnded());
}

TEST_F(RunnerTail, HasEndedWhenOneHostHasFinishedTheRun)
{
    const auto first = m_run.Join(1);
    first->Write(Runner::SRunProblem{L"etwas fehlt"});
    first->Write(Runner::SRunCanceled{L"SIGTERM", 1});
    CPlayedRun::Finish(*first);
    m_tail.Poll();
    EXPECT_FALSE(m_tail.HasEnded());
    EXPECT_EQ(m_tail.GetProblems(), std::vector<std::wstring>{L"etwas fehlt"});
    const auto second = m_run.Join(1);
    m_tail.Poll();
    EXPECT_EQ(m_tail.GetJournalCount(), 2U);
    EXPECT_TRUE(m_tail.GetProblems().empty());
    CPlayedRun::Finish(*second);
    m_run.Join(1);
    m_tail.Poll();
    EXPECT_TRUE(m_tail.HasEnded());
}

TEST_F(RunnerTail, WaitsForTheRestOfARecord)
{
    const auto writer = m_run.Join(1);
    CPlayedRun::RunCase(*writer, 0);
    writer->Close();
    const std::wstring path = m_run.GetShardFolder(1) + Runner::GetJournalName(1);
    const std::string bytes = LbFileSystem::ReadFile8Bit(path);
    const auto write = [&path](std::string_view part) {
        LbFileSystem::RemoveTree(path);
        Runner::CAppendFile(path).Append(part);
    };
    write(std::string_view(bytes).substr(0, bytes.size() - 20));
    m_tail.Poll();
    EXPECT_EQ(m_tail.GetDone(), 0U);
    write(bytes);
    m_tail.Poll();

    EXPECT_EQ(m_tail.GetDone(), 1U);
}

} // namespace
