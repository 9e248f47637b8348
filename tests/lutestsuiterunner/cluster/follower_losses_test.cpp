#include <gtest/gtest.h>

#include "tests/lutestsuiterunner/cluster/followertest.h"

namespace
{

using namespace std::chrono_literals;

TEST_F(RunnerFollower, WarnsOnceThatALostShardWasSubmittedAgain)
{
    const std::vector<std::wstring> expected = {L"Teil 2 verloren (NODE_FAIL auf node1), neu vergeben"};
    StepAfter(0s);
    EXPECT_TRUE(m_follower.TakeWarnings().empty());
    LoseAndNotice(2);
    EXPECT_EQ(m_follower.TakeWarnings(), expected);
    StepAfter(15s);
    EXPECT_TRUE(m_follower.TakeWarnings().empty());

    EXPECT_EQ(m_follower.GetLosses(), expected);
    EXPECT_EQ(Runner::CFollower(m_run.GetFolder(), m_run.GetShards(), m_engine).GetLosses(), expected);
}

TEST_F(RunnerFollower, LimitsTheSubmissionsOfAShardDespiteNewVerdicts)
{
    StepAfter(0s);
    m_run.RunShard(1);
    m_engine.tasks.erase(1);
    CPlayedRun::RunCase(*m_run.Join(2), 0, LuTestSuiteRun::ECaseRunResult::Error);
    LoseAndNotice(2);
    for (std::uint32_t attempt = 2; attempt <= Runner::CFollower::sc_MostSubmissions; ++attempt)
    {
        const auto writer = m_run.Join(2);
        writer->Write(MakeStart(0, attempt, Runner::EAttemptKind::Retry));
        writer->Write(MakeEnd(0, LuTestSuiteRun::ECaseRunResult::Error, attempt));
        LoseAndNotice(2);
    }
    EXPECT_TRUE(StepAfter(60s));

    EXPECT_EQ(m_engine.submitted.size(), 100U);
    EXPECT_EQ(m_follower.GetProblems(),
              std::vector<std::wstring>{
                  L"Teil 2 ging 100-mal verloren und wird nicht mehr vergeben, zuletzt: NODE_FAIL auf node1"});
}

} // namespace
