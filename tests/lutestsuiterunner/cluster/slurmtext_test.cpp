#include "testing/lutestsuiterunner/cluster/slurmtext.h"

#include <gtest/gtest.h>

#include "testing/lutestsuiterunner/cluster/lasterror.h"

namespace
{

using Runner::ETaskState;

TEST(RunnerSlurmText, WritesShardsAsRanges)
{
    EXPECT_EQ(Runner::FormatArray({1, 2, 3, 7, 9, 10}), L"1-3,7,9-10");
    EXPECT_EQ(Runner::FormatArray({4}), L"4");
}

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

TEST(RunnerSlurmText, TakesTheTaskThatIsNotOver)
{
    const Runner::Tasks tasks = Runner::ReadQueue("task|1|FAILED|None|node1\ntask|1|RUNNING|None|node2\n"
                                                  "task|2|RUNNING|None|node3\ntask|2|TIMEOUT|None|node1\n");

    EXPECT_EQ(tasks.at(1).note, L"node2");
    EXPECT_EQ(tasks.at(2).note, L"node3");
}

TEST(RunnerSlurmText, NamesEachSubmissionOnce)
{
    EXPECT_EQ(Runner::GetJobName("abc", 2), L"lutestsuite-abc-2");
}

TEST(RunnerLastError, IsTheLastErrorLine)
{
    EXPECT_EQ(Runner::FindLastError("Fehler: eins\r\nFehler: zwei\r\nkein Fehler: drei\n"), L"zwei");
    EXPECT_EQ(Runner::FindLastError("ein Fehler: nein"), L"");
    EXPECT_EQ(Runner::FindLastError(""), L"");
}

} // namespace
