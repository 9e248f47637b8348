#include "testing/lutestsuiterunner/execution/siblings.h"

#include <gtest/gtest.h>

#include "tests/lutestsuiterunner/cluster/distributedrun.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using namespace std::chrono_literals;

class RunnerSiblings : public testing::Test
{
protected:
    /// What the host with this journal of shard 1 knows.
    std::unique_ptr<Runner::CSiblings> Make(std::uint32_t journal, std::chrono::milliseconds interval = 0ms) const
    {
        return std::make_unique<Runner::CSiblings>(m_run.GetShardFolder(1), journal, m_run.GetShards()[0].cases,
                                                   interval);
    }

    const CPlayedRun m_run;
};

TEST_F(RunnerSiblings, ShowWhatHasPassedElsewhere)
{
    const auto other = m_run.Join(1);
    const auto siblings = Make(2);
    EXPECT_FALSE(siblings->HasPassed(0));
    CPlayedRun::RunCase(*other, 0);

    EXPECT_TRUE(siblings->HasPassed(0));
    EXPECT_FALSE(siblings->HasPassed(1));
}

TEST_F(RunnerSiblings, MayBeginLater)
{
    const auto own = m_run.Join(1);
    const auto siblings = Make(1);
    CPlayedRun::RunCase(*m_run.Join(1), 2);

    EXPECT_TRUE(siblings->HasPassed(2));
    EXPECT_FALSE(siblings->IsEarlierHostActive());
}

TEST_F(RunnerSiblings, DoNotTakeOverFailedCases)
{
    CPlayedRun::RunCase(*m_run.Join(1), 0, ECaseRunResult::Error);

    EXPECT_FALSE(Make(2)->HasPassed(0));
}

TEST_F(RunnerSiblings, AreActiveOnlyIfTheyRecordSomething)
{
    const auto other = m_run.Join(1);
    other->Write(MakeStart(0));
    const auto siblings = Make(2);
    EXPECT_FALSE(siblings->IsEarlierHostActive());
    other->Write(MakeEnd(0, ECaseRunResult::Ok));

    EXPECT_TRUE(siblings->IsEarlierHostActive());
}

TEST_F(RunnerSiblings, AreReadOnceInAnInterval)
{
    const auto other = m_run.Join(1);
    const auto siblings = Make(2, 1h);
    CPlayedRun::RunCase(*other, 0);

    EXPECT_FALSE(siblings->HasPassed(0));
}

TEST_F(RunnerSiblings, CountAsActiveDuringTheFirstIntervalUnlessTheyHaveEnded)
{
    m_run.RunShard(1);
    EXPECT_FALSE(Make(2, 1h)->IsEarlierHostActive());
    m_run.Join(1)->Write(MakeStart(0));

    EXPECT_TRUE(Make(3, 1h)->IsEarlierHostActive());
}

} // namespace
