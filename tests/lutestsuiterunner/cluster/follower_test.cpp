#include "testing/lutestsuiterunner/cluster/follower.h"

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbpath.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "tests/lutestsuiterunner/cluster/followertest.h"

namespace
{

using namespace std::chrono_literals;
using Runner::ETaskState;

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

TEST_F(RunnerFollower, AsksTheSchedulerOncePerPollInterval)
{
    StepAfter(0s);
    for (int second = 0; second < 60; ++second)
    {
        StepAfter(1s);
    }

    EXPECT_EQ(m_engine.questions, 4);
}

TEST_F(RunnerFollower, AsksTheSchedulerOncePerPollIntervalAtTheEnd)
{
    StepAfter(0s);
    StepAfter(15s);
    EXPECT_EQ(m_engine.questions, 1);
    m_run.RunShard(1);
    m_run.RunShard(2);
    EXPECT_FALSE(StepAfter(1s));
    EXPECT_FALSE(StepAfter(5s));
    EXPECT_EQ(m_engine.questions, 1);
    m_engine.tasks.clear();

    EXPECT_TRUE(StepAfter(9s));
    EXPECT_EQ(m_engine.questions, 2);
    EXPECT_EQ(m_engine.cancellations, 0);
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

TEST_F(RunnerFollower, DoesNotSubmitAShardAgainIfItsJournalArrivesLate)
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
    m_engine.tasks.erase(1);
    LoseForGood(2);
    EXPECT_TRUE(StepAfter(58s));

    EXPECT_EQ(m_engine.submitted.size(), 4U);
    EXPECT_TRUE(m_follower.GetShards()[1].isGivenUp);
    ASSERT_EQ(m_follower.GetProblems().size(), 1U);
    EXPECT_EQ(m_follower.GetProblems()[0],
              L"Teil 2 ging 4-mal hintereinander ohne neues Ergebnis verloren, zuletzt: NODE_FAIL auf node1");
}

TEST_F(RunnerFollower, KeepsTheReasonOfALossWhileOtherShardsRun)
{
    StepAfter(0s);
    LoseForGood(2);
    StepAfter(58s);
    m_engine.tasks.erase(2);
    StepAfter(15s);

    EXPECT_EQ(m_follower.GetProblems(),
              std::vector<std::wstring>{
                  L"Teil 2 ging 4-mal hintereinander ohne neues Ergebnis verloren, zuletzt: NODE_FAIL auf node1"});
}

TEST_F(RunnerFollower, DoesNotGiveUpAShardIfItsLastJournalArrivesLate)
{
    StepAfter(0s);
    m_run.RunShard(1);
    LoseForGood(2);
    EXPECT_FALSE(m_follower.GetShards()[1].isGivenUp);
    m_run.RunShard(2);
    m_engine.tasks.clear();

    EXPECT_TRUE(StepAfter(58s));
    EXPECT_TRUE(m_follower.GetProblems().empty());
}

TEST_F(RunnerFollower, SubmitsAShardAgainAsLongAsItBringsNewVerdicts)
{
    StepAfter(0s);
    const std::uint32_t cases = m_run.GetShards()[1].cases;
    for (std::uint32_t index = 0; index < cases; ++index)
    {
        CPlayedRun::RunCase(*m_run.Join(2), index);
        LoseAndNotice(2);
    }
    EXPECT_EQ(m_engine.submitted.size(), 1 + cases);
    LoseForGood(2);
    StepAfter(58s);

    EXPECT_EQ(m_engine.submitted.size(), 1 + cases + 3);
    EXPECT_TRUE(m_follower.GetShards()[1].isGivenUp);
}

TEST_F(RunnerFollower, CountsARetryAsANewVerdict)
{
    StepAfter(0s);
    CPlayedRun::RunCase(*m_run.Join(2), 0, LuTestSuiteRun::ECaseRunResult::Error);
    LoseAndNotice(2);
    for (const std::uint32_t attempt : {2U, 3U, 4U, 5U})
    {
        const auto writer = m_run.Join(2);
        writer->Write(MakeStart(0, attempt, Runner::EAttemptKind::Retry));
        writer->Write(MakeEnd(0, LuTestSuiteRun::ECaseRunResult::Error, attempt));
        LoseAndNotice(2);
    }

    EXPECT_EQ(m_engine.submitted.size(), 6U);
}

TEST_F(RunnerFollower, DoesNotCountADuplicateAsANewVerdict)
{
    StepAfter(0s);
    for (int round = 0; round < 5; ++round)
    {
        CPlayedRun::RunCase(*m_run.Join(2), 0);
        LoseAndNotice(2);
    }

    EXPECT_EQ(m_engine.submitted.size(), 5U);
}

TEST_F(RunnerFollower, CountsLostSubmissionsOfAnotherProcess)
{
    StepAfter(0s);
    m_run.RunShard(1);
    LoseForGood(2);
    Runner::CFollower other(m_run.GetFolder(), m_run.GetShards(), m_engine);
    other.Step(m_now);
    other.Step(m_now + 60s);

    EXPECT_EQ(m_engine.submitted.size(), 4U);
    EXPECT_TRUE(other.GetShards()[1].isGivenUp);
}

TEST_F(RunnerFollower, ThrowsIfTheSchedulerRefusesTheRun)
{
    m_engine.isRefusing = true;

    EXPECT_THROW(StepAfter(0s), LbException);
}

TEST_F(RunnerFollower, SubmitsShardsAgainThatTheSchedulerRefused)
{
    StepAfter(0s);
    m_engine.isRefusing = true;
    LoseAndNotice(2);
    EXPECT_EQ(m_follower.TakeWarnings(),
              (std::vector<std::wstring>{L"Teil 2 verloren (NODE_FAIL auf node1), neu vergeben",
                                         L"Die Neuvergabe der verlorenen Teile 2 ist gescheitert: Kein Platz"}));
    EXPECT_TRUE(m_follower.TakeWarnings().empty());
    m_run.RunShard(1);
    EXPECT_FALSE(StepAfter(1s));
    EXPECT_TRUE(m_follower.GetShards()[0].isEnded);
    m_engine.isRefusing = false;
    StepAfter(14s);
    StepAfter(2s);

    ASSERT_EQ(m_engine.submitted.size(), 2U);
    EXPECT_EQ(m_engine.submitted[1].number, 3U);
    EXPECT_EQ(m_engine.submitted[1].shards, std::vector<std::uint32_t>{2});
}

TEST_F(RunnerFollower, WarnsOnceOfTasksThatNeedAnIntervention)
{
    StepAfter(0s);
    m_engine.tasks[1] = {ETaskState::Waiting, L"JobHeldUser", false, /*isStuck*/ true};
    m_engine.tasks[2] = m_engine.tasks[1];
    StepAfter(15s);
    EXPECT_EQ(m_follower.TakeWarnings(),
              std::vector<std::wstring>{L"Teil 1-2 beginnt ohne einen Eingriff nicht: JobHeldUser"});
    StepAfter(15s);

    EXPECT_TRUE(m_follower.TakeWarnings().empty());
}

TEST_F(RunnerFollower, ReportsThatTheSchedulerRefusedAShard)
{
    StepAfter(0s);
    m_run.RunShard(1);
    m_engine.isRefusing = true;
    LoseForGood(2);
    StepAfter(58s);

    ASSERT_EQ(m_follower.GetProblems().size(), 1U);
    EXPECT_TRUE(m_follower.GetProblems()[0].ends_with(L"zuletzt: Kein Platz"));
}

TEST_F(RunnerFollower, ReportsTheProblemThatTheLostHostRecorded)
{
    StepAfter(0s);
    const auto writer = m_run.Join(2);
    writer->Write(Runner::SRunProblem{L"Auf dem Rechner x fehlt der Ordner y"});
    writer->Close();
    LoseForGood(2);
    StepAfter(58s);

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

TEST_F(RunnerFollower, DoesNotRepeatTheSubmissionOfAnotherProcess)
{
    Runner::CFollower(m_run.GetFolder(), m_run.GetShards(), m_engine).Step(m_now);
    EXPECT_FALSE(Runner::CFollower(m_run.GetFolder(), m_run.GetShards(), m_engine).Step(m_now));

    EXPECT_EQ(m_engine.submitted.size(), 1U);
}

TEST_F(RunnerFollower, DoesNotSubmitAShardThatAnotherProcessClaimed)
{
    StepAfter(0s);
    m_run.RunShard(1);
    Lose(2);
    StepAfter(15s);
    EXPECT_TRUE(Runner::ClaimSubmission(m_run.GetFolder(), {2, {2}, {0}}));
    StepAfter(2s);

    EXPECT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_EQ(m_follower.GetShards()[1].submissions, 2U);
}

TEST_F(RunnerFollower, SubmitsRecordedShardsOnceIfTheirProcessDied)
{
    EXPECT_TRUE(Runner::ClaimSubmission(m_run.GetFolder(), {1, {1, 2}, {0, 0}}));
    Runner::CFollower follower(m_run.GetFolder(), m_run.GetShards(), m_engine);
    follower.Step(m_now);
    EXPECT_TRUE(m_engine.submitted.empty());
    follower.Step(m_now + 2s);
    follower.Step(m_now + 15s);
    follower.Step(m_now + 30s);

    ASSERT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_EQ(m_engine.submitted[0].number, 2U);
    EXPECT_EQ(m_engine.submitted[0].shards, (std::vector<std::uint32_t>{1, 2}));
    EXPECT_EQ(follower.GetShards()[0].submissions, 2U);
}

TEST_F(RunnerFollower, DoesNotSubmitShardsThatAnotherProcessIsRecording)
{
    Runner::CAppendFile file(m_run.GetFolder() + LbPath::ToNative(L"tasks/submission-1.json"));
    Runner::CFollower follower(m_run.GetFolder(), m_run.GetShards(), m_engine);
    follower.Step(m_now);
    file.Append(R"({"shards":[1,2],"verdicts":[0,0]})");
    follower.Step(m_now + 2s);

    EXPECT_TRUE(m_engine.submitted.empty());
    EXPECT_EQ(follower.GetShards()[1].submissions, 1U);
}

TEST_F(RunnerFollower, SubmitsShardsIfADeadProcessLeftAnIncompleteRecord)
{
    Runner::CAppendFile(m_run.GetFolder() + LbPath::ToNative(L"tasks/submission-1.json")).Append("{\"sha");
    Runner::CFollower follower(m_run.GetFolder(), m_run.GetShards(), m_engine);
    follower.Step(m_now);
    follower.Step(m_now + 2s);

    ASSERT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_EQ(m_engine.submitted[0].number, 2U);
}

TEST_F(RunnerFollower, CancelsTheTasksIfAnotherProcessCanceledTheRun)
{
    StepAfter(0s);
    Runner::MarkCanceled(m_run.GetFolder());

    EXPECT_FALSE(StepAfter(1s));
    EXPECT_EQ(m_engine.cancellations, 1);
    EXPECT_TRUE(StepAfter(15s));
    EXPECT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_EQ(m_follower.GetProblems(), std::vector<std::wstring>{L"Der verteilte Lauf wurde abgebrochen"});
}

TEST_F(RunnerFollower, RepeatsACancellationThatHasNoEffect)
{
    StepAfter(0s);
    m_engine.isDeaf = true;
    m_follower.Cancel();
    EXPECT_FALSE(StepAfter(1s));
    EXPECT_TRUE(m_follower.HasAnswer());
    EXPECT_FALSE(StepAfter(1s));
    EXPECT_EQ(m_engine.cancellations, 1);
    EXPECT_FALSE(StepAfter(15s));
    EXPECT_EQ(m_engine.cancellations, 2);
    m_engine.isDeaf = false;
    EXPECT_FALSE(StepAfter(15s));

    EXPECT_TRUE(StepAfter(15s));
    EXPECT_TRUE(m_follower.TakeWarnings().empty());
}

TEST_F(RunnerFollower, WarnsIfACancellationIsNotConfirmed)
{
    StepAfter(0s);
    m_engine.isDeaf = true;
    m_follower.Cancel();
    EXPECT_FALSE(StepAfter(1s));

    EXPECT_TRUE(StepAfter(60s));
    EXPECT_EQ(m_follower.TakeWarnings(),
              std::vector<std::wstring>{L"Der Abbruch ist nicht bestätigt: Prozesse können noch laufen"});
}

TEST_F(RunnerFollower, DoesNotCancelTasksThatEndedSinceTheLastAnswer)
{
    StepAfter(0s);
    m_run.RunShard(1);
    m_run.RunShard(2);
    EXPECT_FALSE(StepAfter(15s));
    m_engine.tasks.clear();

    EXPECT_TRUE(StepAfter(15s));
    EXPECT_EQ(m_engine.cancellations, 0);
}

TEST_F(RunnerFollower, IgnoresACancellationIfTheRunIsComplete)
{
    StepAfter(0s);
    m_run.RunShard(1);
    m_run.RunShard(2);
    Runner::MarkCanceled(m_run.GetFolder());

    EXPECT_TRUE(StepAfter(1s));
    EXPECT_TRUE(m_follower.IsComplete());
    EXPECT_EQ(m_follower.GetProblems(), std::vector<std::wstring>());
}

TEST_F(RunnerFollower, CancelsTasksThatRunAfterAllShardsEnded)
{
    StepAfter(0s);
    m_run.RunShard(1);
    m_run.RunShard(2);
    EXPECT_FALSE(StepAfter(15s));
    EXPECT_EQ(m_engine.cancellations, 0);

    EXPECT_TRUE(StepAfter(15s));
    EXPECT_EQ(m_engine.cancellations, 1);
}

TEST_F(RunnerFollower, CancelsTasksThatTheSchedulerMayHoldForALostShard)
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

TEST_F(RunnerFollower, ShowsInTheStatusThatAShardIsGivenUp)
{
    StepAfter(0s);
    LoseForGood(2);
    Runner::CFollower other(m_run.GetFolder(), m_run.GetShards(), m_engine);
    other.Poll();

    EXPECT_FALSE(other.GetShards()[0].isGivenUp);
    EXPECT_TRUE(other.GetShards()[1].isGivenUp);
}

TEST_F(RunnerFollower, DoesNotShowAShardAsGivenUpWhileItsLastTaskRuns)
{
    StepAfter(0s);
    LoseAndNotice(2);
    LoseAndNotice(2);
    LoseAndNotice(2);
    Runner::CFollower other(m_run.GetFolder(), m_run.GetShards(), m_engine);
    other.Poll();

    EXPECT_EQ(other.GetShards()[1].submissions, 4U);
    EXPECT_FALSE(other.GetShards()[1].isGivenUp);
}

TEST_F(RunnerFollower, SubmitsNothingWhenAskedForTheStatus)
{
    m_follower.Poll();

    EXPECT_TRUE(m_engine.submitted.empty());
    EXPECT_EQ(m_follower.GetShards()[0].submissions, 0U);
}

} // namespace
