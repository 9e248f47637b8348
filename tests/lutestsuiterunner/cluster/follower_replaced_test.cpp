/// What a follower does when another process has replaced its run.

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "tests/lutestsuiterunner/cluster/followertest.h"

namespace
{

using namespace std::chrono_literals;

class RunnerFollowerReplaced : public RunnerFollower
{
protected:
    void Replace() const
    {
        Runner::SPlan plan = MakeSamplePlan();
        plan.runId = "other";
        Runner::WriteShards(m_run.GetFolder(), plan, CPlayedRun::sc_Shards, {});
    }
};

TEST_F(RunnerFollowerReplaced, StopsWhenItAsksTheScheduler)
{
    StepAfter(0s);
    Replace();

    EXPECT_THROW(StepAfter(15s), LbException);
}

TEST_F(RunnerFollowerReplaced, SubmitsNoLostShards)
{
    StepAfter(0s);
    Lose(2);
    StepAfter(15s);
    Replace();

    EXPECT_THROW(StepAfter(2s), LbException);
    EXPECT_EQ(m_engine.submitted.size(), 1U);
    EXPECT_TRUE(Runner::ReadSubmissions(m_run.GetFolder()).empty());
}

TEST_F(RunnerFollowerReplaced, DoesNotCancelTheNewRun)
{
    StepAfter(0s);
    Replace();

    EXPECT_THROW(m_follower.Cancel(), LbException);
    EXPECT_FALSE(Runner::IsMarkedCanceled(m_run.GetFolder()));
}

TEST_F(RunnerFollowerReplaced, StopsWhileTheNewRunIsBeingWritten)
{
    LbOs::RemoveFile(m_run.GetFolder() + Runner::c_ShardsName);

    EXPECT_THROW(m_follower.Watch(), LbException);
}

TEST_F(RunnerFollowerReplaced, NamesTheFolderOfTheReplacedRun)
{
    Replace();
    try
    {
        m_follower.RequireSameRun();
        FAIL();
    }
    catch (const LbException& exception)
    {
        EXPECT_EQ(exception.GetMessageText(), L"Im Ordner " + m_run.GetFolder() +
                                                  L" ist nicht mehr der Lauf, den dieser Prozess begleitet: ein "
                                                  L"anderer hat ihn ersetzt");
    }
}

} // namespace
