#include "testing/lutestsuiterunner/cluster/slurmtext.h"

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "testing/lutestsuiterunner/cluster/lasterror.h"

namespace
{

using Runner::ETaskState;

TEST(RunnerSlurmText, ReadsTheStatesOfTasks)
{
    const Runner::Tasks tasks = Runner::ReadQueue("slurm_load_jobs: warning\n"
                                                  "task|1|RUNNING|None|node1\n"
                                                  "task|2|PENDING|Resources|\n"
                                                  "task|3|NODE_FAIL|None|node2\n"
                                                  "task|4|PENDING|launch failed requeued held|\n"
                                                  "task|x|RUNNING|None|node1\n");

    ASSERT_EQ(tasks.size(), 4U);
    EXPECT_EQ(tasks.at(1).state, ETaskState::Running);
    EXPECT_EQ(tasks.at(1).note, L"node1");
    EXPECT_EQ(tasks.at(2).state, ETaskState::Waiting);
    EXPECT_EQ(tasks.at(2).note, L"Resources");
    EXPECT_EQ(tasks.at(3).state, ETaskState::Over);
    EXPECT_EQ(tasks.at(3).note, L"NODE_FAIL auf node2");
    EXPECT_EQ(tasks.at(4).state, ETaskState::Over);
}

TEST(RunnerSlurmText, TreatsATaskThatSlurmHoldsAsOver)
{
    EXPECT_EQ(Runner::ReadQueue("task|1|PENDING|JobHoldMaxRequeue|\n").at(1).state, ETaskState::Over);
}

TEST(RunnerSlurmText, RecognisesTasksThatNeedAnIntervention)
{
    const Runner::Tasks tasks = Runner::ReadQueue("task|1|PENDING|BadConstraints|\n"
                                                  "task|2|PENDING|Resources|\n"
                                                  "task|3|RUNNING|JobHeldUser|node1\n");

    EXPECT_TRUE(tasks.at(1).isStuck);
    EXPECT_FALSE(tasks.at(2).isStuck);
    EXPECT_FALSE(tasks.at(3).isStuck);
    for (const char* const reason : {"PartitionTimeLimit", "PartitionNodeLimit", "InvalidQOS"})
    {
        EXPECT_TRUE(Runner::ReadQueue(std::string("task|1|PENDING|") + reason + "|\n").at(1).isStuck) << reason;
    }
}

TEST(RunnerSlurmText, PrefersTheRunningTaskOfAShard)
{
    const Runner::Tasks tasks = Runner::ReadQueue("task|1|FAILED|None|node1\ntask|1|RUNNING|None|node2\n"
                                                  "task|2|RUNNING|None|node3\ntask|2|TIMEOUT|None|node1\n");

    EXPECT_EQ(tasks.at(1).note, L"node2");
    EXPECT_EQ(tasks.at(2).note, L"node3");
}

TEST(RunnerSlurmText, FindsTheNewestOutputOfEachShard)
{
    const std::map<std::uint32_t, std::wstring> expected = {{1, L"shard-1-2-0.txt"}, {12, L"shard-12-1-10.txt"}};

    EXPECT_EQ(Runner::FindNewestOutputs({L"shard-1-1-3.txt", L"shard-1-2-0.txt", L"shard-12-1-9.txt",
                                         L"shard-12-1-10.txt", L"shard-3.txt", L"shard-3-1-x.txt", L"task.sh",
                                         L"submission-1.json", L"shard-4-1-.txt"}),
              expected);
}

TEST(RunnerSlurmText, RecognisesOptionsThatTheEngineSets)
{
    for (const wchar_t* const option : {L"--array=1-3", L"--array", L"--arr=1", L"-a1", L"-a", L"--job-name=x", L"-Jx",
                                        L"--clusters=all", L"--cluster=all", L"-M", L"--wait", L"-W", L"--"})
    {
        EXPECT_TRUE(Runner::IsOwnOption(option)) << LbEncoding::ToUtf8(option);
    }
    for (const wchar_t* const option :
         {L"--time=30", L"-t", L"30", L"--wait-all-nodes=1", L"--account=a", L"-w", L"--array-x", L"--comment=--wait"})
    {
        EXPECT_FALSE(Runner::IsOwnOption(option)) << LbEncoding::ToUtf8(option);
    }
}

TEST(RunnerSlurmText, BuildsTheJobNameFromRunAndSubmission)
{
    EXPECT_EQ(Runner::GetJobName("abc", 2), L"lutestsuite-abc-2");
}

TEST(RunnerLastError, FindsTheLastLineWithText)
{
    EXPECT_EQ(Runner::FindLastLine("eins\nzwei \r\n\n"), L"zwei");
    EXPECT_EQ(Runner::FindLastLine("eins"), L"eins");
    EXPECT_EQ(Runner::FindLastLine("\n"), L"");
    EXPECT_EQ(Runner::FindLastLine(""), L"");
}

TEST(RunnerLastError, FindsTheLastErrorLine)
{
    EXPECT_EQ(Runner::FindLastError("Fehler: eins\r\nFehler: zwei\r\nkein Fehler: drei\n"), L"zwei");
    EXPECT_EQ(Runner::FindLastError("ein Fehler: nein"), L"");
    EXPECT_EQ(Runner::FindLastError(""), L"");
}

} // namespace
