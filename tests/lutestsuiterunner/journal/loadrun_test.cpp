#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/journal/readparts.h"
#include "testing/lutestsuiterunner/journal/tail.h"
#include "tests/lutestsuiterunner/cluster/distributedrun.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;

class RunnerDistributedRun : public testing::Test
{
protected:
    std::unique_ptr<Runner::CRunState> Load() const { return Runner::LoadRun(m_run.GetFolder()); }

    /// The index of a shard's case in the whole plan.
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

TEST_F(RunnerDistributedRun, MapsVerdictsOfShardsToCasesOfTheWholeRun)
{
    const auto writer = m_run.Join(2);
    CPlayedRun::RunCase(*writer, 0, ECaseRunResult::Error);
    const auto state = Load();

    const std::uint32_t failed = GetWhole(2, 0);
    EXPECT_EQ(state->GetVerdict(failed), Runner::EVerdict::Failed);
    EXPECT_EQ(state->CountVerdicts().missing, 5U);
}

TEST_F(RunnerDistributedRun, IsNotEndedUntilAllShardsHaveEnded)
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

TEST_F(RunnerDistributedRun, StaysGreenIfAnotherHostBeginsAnEndedShard)
{
    m_run.RunShard(1);
    m_run.RunShard(2);
    m_run.Join(2)->Write(Runner::SRunProblem{L"Auf dem Rechner x fehlt y"});

    EXPECT_TRUE(Load()->IsGreen());
}

TEST_F(RunnerDistributedRun, CountsTheResultInTheFirstOfTwoJournals)
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

/// A run with a proof: a file that tells how many records of each journal count.
class RunnerProvenRun : public RunnerDistributedRun
{
protected:
    /// Writes a proof with the number of records that each journal has now.
    void Prove() const
    {
        std::vector<Runner::SReadPart> parts;
        const auto state = Runner::LoadDistributedRun(m_run.GetFolder(), parts);
        std::string shards;
        for (const Runner::SReadPart& part : parts)
        {
            std::string counts;
            for (const std::uint64_t count : part.records)
            {
                counts += (counts.empty() ? "" : ",") + std::to_string(count);
            }
            shards += (shards.empty() ? "" : ",") + ("{\"journals\":[" + counts + "]}");
        }
        WriteProof("{\"plan\":\"" + state->GetPlan().digest + "\",\"shards\":[" + shards + "]}");
    }

    void WriteProof(const std::string& text) const
    {
        Runner::CAppendFile(m_run.GetFolder() + Runner::c_ProofName).Append(text);
    }
};

TEST_F(RunnerProvenRun, IgnoresRecordsThatHostsWriteLater)
{
    m_run.RunShard(1);
    const auto slow = m_run.Join(2);
    slow->Write(MakeStart(0));
    m_run.RunShard(2);
    Prove();
    slow->Write(MakeEnd(0, ECaseRunResult::Error));
    CPlayedRun::RunCase(*m_run.Join(2), 1);
    std::vector<Runner::SReadPart> parts;
    const auto state = Runner::LoadDistributedRun(m_run.GetFolder(), parts);

    const std::uint32_t both = GetWhole(2, 0);
    EXPECT_EQ(state->GetVerdict(both), Runner::EVerdict::Passed);
    EXPECT_EQ(state->GetAttempts(both)[0].duplicates, 0U);
    EXPECT_EQ(state->GetAttempts(GetWhole(2, 1))[0].duplicates, 0U);
    EXPECT_TRUE(state->IsGreen());
    EXPECT_EQ(parts[1].records, (std::vector<std::uint64_t>{2, 2 + 2 * m_run.GetShards()[1].cases}));
    EXPECT_EQ(Load()->GetVerdict(both), Runner::EVerdict::Passed);
}

TEST_F(RunnerProvenRun, StaysRedIfItsLastVerdictsFollowTheProof)
{
    m_run.RunShard(1);
    Prove();
    m_run.RunShard(2);

    EXPECT_EQ(Load()->CountVerdicts().missing, m_run.GetShards()[1].cases);
    EXPECT_EQ(Load()->GetProblems(), std::vector<std::wstring>{L"Teil 2 von 2 ist nicht beendet"});
}

TEST_F(RunnerProvenRun, IsRedIfRecordsAreMissing)
{
    m_run.RunShard(1);
    const auto writer = m_run.Join(2);
    WriteProof("{\"plan\":\"" + Load()->GetPlan().digest + R"(","shards":[{"journals":[8]},{"journals":[2]}]})");

    ASSERT_EQ(m_run.GetShards()[0].cases, 3U);
    EXPECT_EQ(Load()->GetProblems(),
              std::vector<std::wstring>{L"Teil 2 von 2 konnte nicht vollständig gelesen werden: Das Journal " +
                                        m_run.GetShardFolder(2) + L"journal.ndjson hat 1 statt 2 Einträge"});
}

TEST_F(RunnerProvenRun, IsRedIfItsProofIsDamaged)
{
    m_run.RunShard(1);
    m_run.RunShard(2);
    WriteProof("{\"plan\":");

    EXPECT_FALSE(Load()->IsGreen());
    EXPECT_EQ(Load()->GetProblems(),
              std::vector<std::wstring>{L"Die Datei " + m_run.GetFolder() + L"proof.json ist beschädigt"});
}

TEST_F(RunnerProvenRun, IgnoresTheProofOfAnotherPlan)
{
    WriteProof(R"({"plan":"00000000000000000000000000000000","shards":[{"journals":[0]},{"journals":[0]}]})");
    m_run.RunShard(1);
    m_run.RunShard(2);

    EXPECT_TRUE(Load()->IsGreen());
}

/// Shard 1 is complete; each test damages shard 2.
class RunnerDamagedShard : public RunnerDistributedRun
{
protected:
    RunnerDamagedShard() { m_run.RunShard(1); }

    /// Expects a red run with all verdicts of shard 1 and this number of passes in shard 2. Returns its only problem.
    std::wstring GetProblem(std::uint32_t passedInShard2 = 0) const
    {
        std::vector<Runner::SReadPart> parts;
        const auto state = Runner::LoadDistributedRun(m_run.GetFolder(), parts);
        EXPECT_FALSE(state->IsGreen());
        EXPECT_EQ(state->CountVerdicts().passed, m_run.GetShards()[0].cases + passedInShard2);
        EXPECT_EQ(parts.size(), 2U);
        EXPECT_EQ(parts.back().verdicts, passedInShard2);
        EXPECT_EQ(state->GetProblems().size(), 1U);
        return state->GetProblems().empty() ? std::wstring() : state->GetProblems()[0];
    }

    void ExpectProblem(const std::wstring& end, std::uint32_t passedInShard2 = 0) const
    {
        const std::wstring problem = GetProblem(passedInShard2);
        EXPECT_TRUE(problem.starts_with(L"Teil 2 von 2 konnte nicht vollständig gelesen werden: "));
        EXPECT_NE(problem.find(end), std::wstring::npos) << problem;
    }

    /// Changes a byte of the line with this number in a journal of shard 2.
    void DamageLine(std::uint32_t journal, std::uint32_t line) const
    {
        const std::wstring path = m_run.GetShardFolder(2) + Runner::GetJournalName(journal);
        std::string bytes = LbFileSystem::ReadFile8Bit(path);
        std::size_t place = 0;
        for (; line > 1; --line)
        {
            place = bytes.find('\n', place) + 1;
        }
        bytes[place + 40] = '#';
        LbFileSystem::RemoveTree(path);
        Runner::CAppendFile(path).Append(bytes);
    }
};

TEST_F(RunnerDamagedShard, IsRedIfItHasThePlanOfAnotherRun)
{
    m_run.RunShard(2);
    const CPlayedRun other;
    const std::wstring path = m_run.GetShardFolder(2) + Runner::c_PlanName;
    EXPECT_TRUE(LbFileSystem::CopyContent(other.GetShardFolder(2) + Runner::c_PlanName, path));

    ExpectProblem(L"gehört nicht zu dem in");
}

TEST_F(RunnerDamagedShard, IsRedIfItsPlanIsMissing)
{
    LbFileSystem::RemoveTree(m_run.GetShardFolder(2) + Runner::c_PlanName);

    ExpectProblem(L"plan.ndjson");
}

TEST_F(RunnerDamagedShard, IsRedIfARecordNamesAnUnknownCase)
{
    const auto writer = m_run.Join(2);
    CPlayedRun::RunCase(*writer, 0);
    writer->Write(MakeStart(100));

    ExpectProblem(L"Zeile 4: Der Plan enthält den Testfall 100 nicht", 1);
}

TEST_F(RunnerDamagedShard, KeepsTheVerdictsBeforeTheDamage)
{
    m_run.RunShard(2);
    DamageLine(1, 4);

    ExpectProblem(L"journal.ndjson ist beschädigt: Zeile 4", 1);
}

TEST_F(RunnerDamagedShard, IsRedEvenIfAllItsVerdictsAreKnown)
{
    m_run.RunShard(2);
    const auto writer = m_run.Join(2);
    writer->Write(MakeStart(0));
    writer->Write(MakeEnd(0, ECaseRunResult::Ok));
    writer->Close();
    DamageLine(2, 2);

    ExpectProblem(L"journal-2.ndjson ist beschädigt: Zeile 2", m_run.GetShards()[1].cases);
}

TEST_F(RunnerDamagedShard, LeavesTheShardsAfterItUntouched)
{
    m_run.RunShard(2);
    LbFileSystem::RemoveTree(m_run.GetShardFolder(1) + Runner::c_PlanName);
    const auto state = Load();

    EXPECT_EQ(state->CountVerdicts().passed, m_run.GetShards()[1].cases);
    EXPECT_EQ(state->CountVerdicts().missing, m_run.GetShards()[0].cases);
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

TEST_F(RunnerTail, FindsTheCasesThatAHostRuns)
{
    const auto first = m_run.Join(1);
    first->Write(MakeStart(0));
    first->Write(MakeStart(1));
    first->Write(MakeEnd(0, ECaseRunResult::Ok));
    m_run.Join(1)->Write(MakeStart(0));
    m_tail.Poll();
    EXPECT_FALSE(m_tail.IsUnderWay(1, 0));
    EXPECT_TRUE(m_tail.IsUnderWay(1, 1));
    EXPECT_TRUE(m_tail.IsUnderWay(2, 0));
    CPlayedRun::Finish(*first);
    m_tail.Poll();

    EXPECT_FALSE(m_tail.IsUnderWay(1, 1));
}

TEST_F(RunnerTail, SkipsTheJournalOfItsOwnHost)
{
    CPlayedRun::RunCase(*m_run.Join(1), 0);
    CPlayedRun::RunCase(*m_run.Join(1), 1);
    Runner::CRunTail tail(m_run.GetShardFolder(1), m_run.GetShards()[0].cases, 1);
    tail.Poll();

    EXPECT_EQ(tail.GetJournalCount(), 2U);
    EXPECT_FALSE(tail.HasPassed(0));
    EXPECT_TRUE(tail.HasPassed(1));
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
