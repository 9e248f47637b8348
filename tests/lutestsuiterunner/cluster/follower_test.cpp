#include "testing/lutestsuiterunner/cluster/follower.h"

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbpath.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "tests/lutestsuiterunner/cluster/distributedrun.h"

namespace
{

using namespace std::chrono_literals;
using Runner::ETaskState;

/// An engine whose answers the test sets.
class CFakeEngine : public Runner::IEngine
{
public:
    void Submit(const Runner::SSubmission& submission) override
    {
        submitted.push_back(submission);
        for (const std::uint32_t shard : submission.shards)
        {
            tasks[shard] = {ETaskState::Running, L"node"};
        }
    }

    std::optional<Runner::Tasks> Poll(const std::vector<Runner::SSubmission>& /*submissions*/) override
    {
        ++questions;
        return isSilent ? std::nullopt : std::optional(tasks);
    }

    void Cancel(const std::vector<Runner::SSubmission>& /*submissions*/) override
    {
        ++cancellations;
        tasks.clear();
    }

    std::chrono::milliseconds GetPollInterval() const override { return 15s; }

    std::chrono::milliseconds GetGrace() const override { return 2s; }

    std::vector<Runner::SSubmission> submitted;
    Runner::Tasks tasks;
    bool isSilent = false;
    int questions = 0;
    int cancellations = 0;
};

class RunnerFollower : public testing::Test
{
protected:
    /// Advances the time and makes one step.
    bool StepAfter(std::chrono::seconds seconds)
    {
        m_now += seconds;
        return m_follower.Step(m_now);
    }

    void Lose(std::uint32_t shard, const std::wstring& note = L"NODE_FAIL auf node1")
    {
        m_engine.tasks[shard] = {ETaskState::Over, note};
    }

    const CPlayedRun m_run;
    CFakeEngine m_engine;
    Runner::CFollower m_follower{m_run.GetFolder(), m_run.GetShards(), m_engine};
    Runner::CFollower::Time m_now;
};

TEST_F(RunnerFollower, SubmitsAllShardsAtOnceAndWaitsForTheirJournals)
{
    EXPECT_FALSE(StepAfter(0s));
    ASSERT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_EQ(m_engine.submitted[0].shards, (std::vector<std::uint32_t>{1, 2}));
    m_run.RunShard(1);
    EXPECT_FALSE(StepAfter(1s));
    EXPECT_TRUE(m_follower.GetShards()[0].isEnded);
    EXPECT_EQ(m_follower.GetShards()[0].done, m_run.GetShards()[0].cases);
    m_run.RunShard(2);
    m_engine.tasks.clear();

    EXPECT_TRUE(StepAfter(15s));
    EXPECT_TRUE(m_follower.GetProblems().empty());
    EXPECT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_EQ(m_engine.cancellations, 0);
}

TEST_F(RunnerFollower, AsksTheSchedulerSeldom)
{
    StepAfter(0s);
    for (int second = 0; second < 60; ++second)
    {
        StepAfter(1s);
    }

    EXPECT_EQ(m_engine.questions, 4);
}

TEST_F(RunnerFollower, SubmitsLostShardsAgain)
{
    StepAfter(0s);
    m_run.RunShard(1);
    Lose(2);
    EXPECT_FALSE(StepAfter(15s));
    EXPECT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_FALSE(StepAfter(2s));

    ASSERT_EQ(m_engine.submitted.size(), 2U);
    EXPECT_EQ(m_engine.submitted[1].number, 2U);
    EXPECT_EQ(m_engine.submitted[1].shards, std::vector<std::uint32_t>{2});
    EXPECT_EQ(m_follower.GetShards()[1].submissions, 2U);
}

TEST_F(RunnerFollower, AcceptsAJournalThatArrivesLate)
{
    StepAfter(0s);
    Lose(1, L"COMPLETED");
    StepAfter(15s);
    m_run.RunShard(1);
    StepAfter(2s);

    EXPECT_EQ(m_engine.submitted.size(), 1U);
}

TEST_F(RunnerFollower, GivesUpAShardThatIsLostTooOften)
{
    StepAfter(0s);
    m_run.RunShard(1);
    for (int round = 0; round < 4; ++round)
    {
        Lose(2);
        StepAfter(15s);
        StepAfter(2s);
    }

    EXPECT_EQ(m_engine.submitted.size(), 4U);
    EXPECT_TRUE(m_follower.GetShards()[1].isGivenUp);
    ASSERT_EQ(m_follower.GetProblems().size(), 1U);
    EXPECT_EQ(m_follower.GetProblems()[0],
              L"Teil 2 wurde 4 mal vergeben und jedes Mal verloren, zuletzt: NODE_FAIL auf node1");
}

TEST_F(RunnerFollower, ReportsWhatTheHostMissed)
{
    StepAfter(0s);
    const auto writer = m_run.Join(2);
    writer->Write(Runner::SRunProblem{L"Auf dem Rechner x fehlt der Ordner y"});
    writer->Close();
    for (int round = 0; round < 4; ++round)
    {
        Lose(2);
        StepAfter(15s);
        StepAfter(2s);
    }

    ASSERT_EQ(m_follower.GetProblems().size(), 1U);
    EXPECT_TRUE(m_follower.GetProblems()[0].ends_with(L"zuletzt: Auf dem Rechner x fehlt der Ordner y"));
}

TEST_F(RunnerFollower, WaitsWhileTheSchedulerDoesNotAnswer)
{
    StepAfter(0s);
    m_engine.isSilent = true;
    Lose(1);
    StepAfter(15s);
    StepAfter(15s);
    EXPECT_FALSE(m_follower.HasAnswer());
    EXPECT_EQ(m_engine.submitted.size(), 1U);
    m_engine.isSilent = false;
    StepAfter(15s);
    StepAfter(2s);

    EXPECT_EQ(m_engine.submitted.size(), 2U);
}

TEST_F(RunnerFollower, ContinuesWhereAnotherProcessEnded)
{
    Runner::CFollower(m_run.GetFolder(), m_run.GetShards(), m_engine).Step(m_now);
    EXPECT_FALSE(Runner::CFollower(m_run.GetFolder(), m_run.GetShards(), m_engine).Step(m_now));

    EXPECT_EQ(m_engine.submitted.size(), 1U);
}

TEST_F(RunnerFollower, LeavesASubmissionToAQuickerProcess)
{
    StepAfter(0s);
    m_run.RunShard(1);
    Lose(2);
    StepAfter(15s);
    EXPECT_TRUE(Runner::ClaimSubmission(m_run.GetFolder(), {2, {2}}));
    StepAfter(2s);

    EXPECT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_EQ(m_follower.GetShards()[1].submissions, 2U);
}

TEST_F(RunnerFollower, CancelsForAllProcesses)
{
    StepAfter(0s);
    Runner::MarkCanceled(m_run.GetFolder());

    EXPECT_FALSE(StepAfter(1s));
    EXPECT_EQ(m_engine.cancellations, 1);
    EXPECT_TRUE(StepAfter(15s));
    EXPECT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_EQ(m_follower.GetProblems(), std::vector<std::wstring>{L"Der verteilte Lauf wurde abgebrochen"});
}

TEST_F(RunnerFollower, EndsAHostThatIsSuperfluous)
{
    StepAfter(0s);
    m_run.RunShard(1);
    m_run.RunShard(2);
    EXPECT_FALSE(StepAfter(15s));
    EXPECT_EQ(m_engine.cancellations, 0);

    EXPECT_TRUE(StepAfter(2s));
    EXPECT_EQ(m_engine.cancellations, 1);
}

TEST_F(RunnerFollower, EndsTasksThatTheSchedulerMayHoldForALostShard)
{
    StepAfter(0s);
    m_run.RunShard(1);
    Lose(2, L"launch failed requeued held");
    StepAfter(15s);
    StepAfter(2s);
    m_run.RunShard(2);
    m_engine.tasks.clear();

    EXPECT_TRUE(StepAfter(15s));
    EXPECT_EQ(m_engine.cancellations, 1);
}

TEST_F(RunnerFollower, RecognisesABegunShardByItsJournal)
{
    StepAfter(0s);
    const auto writer = m_run.Join(1);
    StepAfter(1s);

    EXPECT_TRUE(m_follower.GetShards()[0].hasBegun);
    EXPECT_FALSE(m_follower.GetShards()[1].hasBegun);
}

TEST_F(RunnerFollower, SubmitsNothingWhenAskedForTheStatus)
{
    m_follower.Look();

    EXPECT_TRUE(m_engine.submitted.empty());
    EXPECT_EQ(m_follower.GetShards()[0].submissions, 0U);
}

TEST(RunnerSubmissions, AreClaimedOnce)
{
    const CPlayedRun run;
    EXPECT_TRUE(Runner::ReadSubmissions(run.GetFolder()).empty());
    EXPECT_TRUE(Runner::ClaimSubmission(run.GetFolder(), {1, {1, 2}}));
    EXPECT_FALSE(Runner::ClaimSubmission(run.GetFolder(), {1, {1}}));
    const auto submissions = Runner::ReadSubmissions(run.GetFolder());

    ASSERT_EQ(submissions.size(), 1U);
    EXPECT_EQ(submissions[0].shards, (std::vector<std::uint32_t>{1, 2}));
}

TEST(RunnerSubmissions, WithoutContentHaveNoShards)
{
    const CPlayedRun run;
    Runner::CAppendFile(run.GetFolder() + LbPath::ToNative(L"tasks/submission-1.json")).Append("{\"sha");

    ASSERT_EQ(Runner::ReadSubmissions(run.GetFolder()).size(), 1U);
    EXPECT_TRUE(Runner::ReadSubmissions(run.GetFolder())[0].shards.empty());
}

TEST(RunnerSubmissions, NeedTheirFolder)
{
    EXPECT_THROW(Runner::ClaimSubmission(LbPath::ToNative(L"/gibt es nicht/"), {1, {1}}), LbException);
    EXPECT_THROW(Runner::MarkCanceled(LbPath::ToNative(L"/gibt es nicht/")), LbException);
}

} // namespace
