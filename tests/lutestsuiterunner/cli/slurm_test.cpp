#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/process.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "tests/lutestsuiterunner/cli/distributedtest.h"
#include "tests/support/places.h"

namespace
{

/// Distributed runs over a Slurm of three nodes that the test starts. Skipped where there is none.
class RunnerSlurm : public DistributedTest
{
protected:
    void SetUp() override
    {
        if (LbPath::c_Separator != L'/')
        {
            GTEST_SKIP() << "Slurm needs Linux";
        }
        const SHostRun start = callCluster(L"start");
        if (start.exitStatus != 0)
        {
            GTEST_SKIP() << "There is no Slurm: " << start.errors;
        }
        std::wstring settings = LbEncoding::FromUtf8(callCluster(L"settings").output);
        settings.pop_back();
        m_options.variables = {{L"SLURM_CONF", settings}};
    }

    void TearDown() override { callCluster(L"stop"); }

    SHostRun RunWithSlurm(const std::vector<std::wstring>& arguments) const { return RunRunner(arguments, m_options); }

    SHostOptions m_options;

private:
    /// Each process has its own Slurm. Its folder is a temporary one, because munge's user must be able to enter it.
    static SHostRun callCluster(const std::wstring& command)
    {
        SHostOptions options;
        options.program = L"" LUTESTSUITE_SOURCE_DIR "/scripts/cluster";
        const std::wstring name = L"lutestsuite-cluster-test-" + std::to_wstring(LbOs::GetProcessId());
        options.variables = {{L"LUTESTSUITE_CLUSTER", LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + name}};
        return RunHost({command}, options);
    }
};

TEST_F(RunnerSlurm, GivesTheReportsOfARunInOneProcess)
{
    MakeMixedData();
    const SHostRun run = Submit({L"--engine", L"slurm", L"--shards", L"3"}, {}, m_options);
    EXPECT_EQ(run.exitStatus, 1) << run.output << run.errors;
    EXPECT_EQ(Run({L"run", L"--out", GetOther()}).exitStatus, 1);

    for (const wchar_t* const name : {L"junit.xml", L"report.xml", L"summary.json"})
    {
        EXPECT_EQ(ReadReport(GetOut() + name), ReadReport(GetOther() + name)) << LbEncoding::ToUtf8(name);
    }
    ExpectProof(GetOut());
}

TEST_F(RunnerSlurm, FindsItsTasksAgain)
{
    MakeDurations({1000, 1000, 1000, 1000});
    const SHostRun run = Submit({L"--engine", L"slurm", L"--shards", L"2", L"--detach"}, {}, m_options);
    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(RunWithSlurm({L"status", GetOut()}).output, "Teil 2: ");

    EXPECT_EQ(RunWithSlurm({L"wait", GetOut()}).exitStatus, 0);
    EXPECT_FALSE(LbFileSystem::IsFile(GetOut() + LbPath::ToNative(L"tasks/submission-2.json")));
    ExpectProof(GetOut());
}

TEST_F(RunnerSlurm, CancelsItsTasks)
{
    MakeDurations({60000, 60000});
    Submit({L"--engine", L"slurm", L"--shards", L"2", L"--detach"}, {}, m_options);
    EXPECT_EQ(RunWithSlurm({L"cancel", GetOut()}).exitStatus, 0);
    const SHostRun run = RunWithSlurm({L"wait", GetOut()});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "Fehler: Der verteilte Lauf wurde abgebrochen\n");
}

TEST_F(RunnerSlurm, PassesOnWhatSlurmRefuses)
{
    MakeDurations({1});
    const SHostRun run =
        Submit({L"--engine", L"slurm", L"--shards", L"1", L"--sbatch=--partition=fehlt"}, {}, m_options);

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Fehler: Slurm nimmt die Teile nicht an (sbatch): ");
}

} // namespace
