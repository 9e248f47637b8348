#include <chrono>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/process.h"
#include "testing/lutestsuiterunner/cluster/slurmtext.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "tests/lutestsuiterunner/cli/distributedtest.h"
#include "tests/support/places.h"

namespace
{

/// Distributed runs over a Slurm of three nodes that the tests of this process start. Skipped where no Slurm can run.
class RunnerSlurm : public DistributedTest
{
protected:
    static void SetUpTestSuite()
    {
        if (LbPath::c_Separator == L'/')
        {
            s_start = callCluster({L"start"});
        }
    }

    static void TearDownTestSuite()
    {
        if (s_start.exitStatus == 0)
        {
            EXPECT_EQ(callCluster({L"stop"}).exitStatus, 0);
        }
    }

    void SetUp() override
    {
        if (LbPath::c_Separator != L'/')
        {
            GTEST_SKIP() << "Slurm needs Linux";
        }
        if (s_start.exitStatus == c_Unavailable)
        {
            GTEST_SKIP() << "Slurm cannot run here: " << s_start.errors;
        }
        ASSERT_EQ(s_start.exitStatus, 0) << s_start.output << s_start.errors;
        std::wstring settings = LbEncoding::FromUtf8(callCluster({L"settings"}).output);
        settings.pop_back();
        m_options.variables = {{L"SLURM_CONF", settings}};
    }

    SHostRun RunWithSlurm(const std::vector<std::wstring>& arguments) const { return RunRunner(arguments, m_options); }

    /// Submits a shard whose first case takes very long, and waits until a task runs it. Returns the task's id.
    std::wstring BeginLongTask() const
    {
        MakeDurations({600'000, 1, 1});
        const SHostRun run = Submit({L"--engine", L"slurm", L"--shards", L"1", L"--detach"}, {}, m_options);
        EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
        WaitForState("RUNNING");
        const std::wstring journal = GetOut() + Runner::GetShardFolderName(1) + Runner::GetJournalName(1);
        waitUntil([&] {
            return LbFileSystem::IsFile(journal) &&
                   LbFileSystem::ReadFile8Bit(journal).find("{\"t\":\"start\"") != std::string::npos;
        });
        std::wstring id = LbEncoding::FromUtf8(CallQueue(L"--format=%F_%K"));
        id.erase(id.find_last_not_of(L" \n") + 1);
        return id;
    }

    /// Waits until Slurm reports the state for a task of the first submission.
    void WaitForState(const std::string& state) const
    {
        waitUntil([&] { return CallQueue(L"--format=%T").find(state) != std::string::npos; });
    }

    /// Returns a line for each task of the first submission.
    std::string CallQueue(const std::wstring& format) const
    {
        const std::string run = Runner::ReadPlan(GetOut() + Runner::c_PlanName).runId;
        return CallSlurm(
            {L"squeue", L"--array", L"--states=all", L"--noheader", L"--name=" + Runner::GetJobName(run, 1), format});
    }

    static std::string CallSlurm(std::vector<std::wstring> words)
    {
        words.insert(words.begin(), L"run");
        const SHostRun run = callCluster(words);
        EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
        return run.output;
    }

    /// Makes the case short, waits for the end of the run, and expects that this number of submissions was enough.
    void ExpectWhole(int submissions) const
    {
        MakeDurations({1});
        const SHostRun run = RunWithSlurm({L"wait", GetOut()});
        EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
        ExpectLine(run.output, "Fälle: 3, bestanden: 3");
        ExpectProof(GetOut());
        const std::wstring next = L"tasks/submission-" + std::to_wstring(submissions + 1) + L".json";
        EXPECT_FALSE(LbFileSystem::IsFile(GetOut() + next));
        EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + Runner::GetShardFolderName(1) + Runner::GetJournalName(2)));
    }

    SHostOptions m_options;

private:
    /// The status of scripts/cluster if Slurm cannot run on the machine.
    static constexpr int c_Unavailable = 3;

    static inline SHostRun s_start; ///< result of starting Slurm

    template<typename F>
    static void waitUntil(const F& condition)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(3);
        while (!condition())
        {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
        }
    }

    /// Each test process has its own Slurm, in a temporary folder, because munge's user must be able to enter the
    /// folder.
    static SHostRun callCluster(const std::vector<std::wstring>& words)
    {
        SHostOptions options;
        options.program = L"" LUTESTSUITE_SOURCE_DIR "/scripts/cluster";
        const std::wstring name = L"lutestsuite-cluster-test-" + std::to_wstring(LbOs::GetProcessId());
        options.variables = {{L"LUTESTSUITE_CLUSTER", LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + name}};
        return RunHost(words, options);
    }
};

TEST_F(RunnerSlurm, WritesTheSameReportsAsARunInOneProcess)
{
    MakeMixedData();
    const SHostRun run = Submit({L"--engine", L"slurm", L"--shards", L"3"}, {}, m_options);
    EXPECT_EQ(run.exitStatus, 1) << run.output << run.errors;
    EXPECT_EQ(Run({L"run", L"--out", GetOther()}).exitStatus, 1);

    ExpectSameReports(GetOut(), GetOther());
    ExpectProof(GetOut());
}

TEST_F(RunnerSlurm, WritesTheSameReportsOfTheExamplesAsARunInOneProcess)
{
    const SHostRun run =
        RunExamples({L"submit", L"--engine", L"slurm", L"--shards", L"4", L"--out", GetOut()}, m_options);
    EXPECT_EQ(run.exitStatus, 1) << run.output << run.errors;
    EXPECT_EQ(run.output.find("Fälle: 0,"), std::string::npos) << run.output;
    EXPECT_EQ(RunExamples({L"run", L"--out", GetOther()}).exitStatus, 1);

    ExpectSameReports(GetOut(), GetOther());
    ExpectProof(GetOut());
}

TEST_F(RunnerSlurm, CancelsTheTasksOfARunThatIsReplaced)
{
    BeginLongTask();
    const std::wstring plan = GetOut() + Runner::c_PlanName;
    const std::wstring job = L"--name=" + Runner::GetJobName(Runner::ReadPlan(plan).runId, 1);
    const SHostRun run = Submit({L"--engine", L"slurm", L"--shards", L"2", L"--force"}, {L"-i", L":1.ms$"}, m_options);

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.errors, " noch läuft, wird abgebrochen.\n");
    EXPECT_EQ(CallSlurm({L"squeue", L"--noheader", job}), "");
    ExpectProof(GetOut());
}

TEST_F(RunnerSlurm, FindsTheTasksOfADetachedRun)
{
    MakeDurations({1000, 1000, 1000, 1000});
    const SHostRun run = Submit({L"--engine", L"slurm", L"--shards", L"2", L"--detach"}, {}, m_options);
    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(RunWithSlurm({L"status", GetOut()}).output, "Teil 2: ");

    EXPECT_EQ(RunWithSlurm({L"wait", GetOut()}).exitStatus, 0);
    EXPECT_FALSE(LbFileSystem::IsFile(GetOut() + LbPath::ToNative(L"tasks/submission-2.json")));
    ExpectProof(GetOut());
}

TEST_F(RunnerSlurm, LosesNoCaseOfARequeuedTask)
{
    const std::wstring task = BeginLongTask();
    CallSlurm({L"scontrol", L"requeue", task});
    WaitForState("PENDING");
    // Otherwise, Slurm would wait for two minutes before it starts the task again.
    CallSlurm({L"scontrol", L"update", L"jobid=" + task, L"StartTime=now"});

    ExpectWhole(1);
}

TEST_F(RunnerSlurm, LosesNoCaseOfACanceledTask)
{
    CallSlurm({L"scancel", BeginLongTask()});
    WaitForState("CANCELLED");

    ExpectWhole(2);
}

TEST_F(RunnerSlurm, LosesNoCaseOfATaskBeyondItsTimeLimit)
{
    CallSlurm({L"scontrol", L"update", L"jobid=" + BeginLongTask(), L"EndTime=now"});
    WaitForState("TIMEOUT");

    ExpectWhole(2);
}

TEST_F(RunnerSlurm, CancelsItsTasks)
{
    BeginLongTask();
    EXPECT_EQ(RunWithSlurm({L"cancel", GetOut()}).exitStatus, 0);
    const SHostRun run = RunWithSlurm({L"wait", GetOut()});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "Fehler: Der verteilte Lauf wurde abgebrochen\n");
    EXPECT_EQ(run.errors.find("nicht bestätigt"), std::string::npos) << run.errors;
    const std::string id = Runner::ReadPlan(GetOut() + Runner::c_PlanName).runId;
    EXPECT_EQ(CallSlurm({L"squeue", L"--noheader", L"--name=" + Runner::GetJobName(id, 1)}), "");
}

TEST_F(RunnerSlurm, ReportsThatSlurmRefusesTheShards)
{
    MakeDurations({1});
    const SHostRun run =
        Submit({L"--engine", L"slurm", L"--shards", L"1", L"--sbatch=--partition=fehlt"}, {}, m_options);

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Fehler: Slurm nimmt die Teile nicht an (sbatch): ");
}

} // namespace
