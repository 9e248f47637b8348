/// Runs in a folder whose file system has no locks.

#include <functional>
#include <thread>

#include "base/lbfilesystem.h"
#include "tests/lutestsuiterunner/cli/distributedtest.h"
#include "tests/support/os/filelimits.h"

namespace
{

class RunnerWithoutLocks : public DistributedTest
{
protected:
    /// Calls the function on a new thread. Locking folders fails there and in the processes that the thread starts.
    /// Skips the test if the system cannot forbid locks.
    static void CallWithoutLocks(const std::function<void()>& function)
    {
        bool areForbidden = false;
        std::thread([&] {
            areForbidden = LbOs::ForbidLocks();
            if (areForbidden)
            {
                function();
            }
        }).join();
        if (!areForbidden)
        {
            GTEST_SKIP() << "the system cannot forbid locks";
        }
    }

    static void ExpectWarning(const SHostRun& run, const std::wstring& folder)
    {
        EXPECT_EQ(FromPlatformLines(run.errors),
                  "Warnung: Der Ordner " + LbEncoding::ToUtf8(folder) +
                      " kann nicht gesperrt werden: ein zweiter Lauf, der zugleich hineinschreibt, bleibt unbemerkt\n");
    }
};

TEST_F(RunnerWithoutLocks, RunsAndResumesWithAWarning)
{
    m_folder.MakeFolder(L"data/CResultModel");
    CallWithoutLocks([this] {
        ExpectWarning(Run({L"run", L"--fail-fast"}), GetOut());

        const SHostRun run = Resume();

        ExpectLine(run.output, "Fälle: 7, bestanden: 2, unzuverlässig: 0, fehlgeschlagen: 5");
        ExpectWarning(run, GetOut());
    });
}

TEST_F(RunnerWithoutLocks, MergesWithAWarning)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    CallWithoutLocks([this] {
        Run({L"run"});
        const SHostRun run = RunRunner({L"merge", GetOut(), L"--out", m_folder.GetPathOf(L"ganz")});

        EXPECT_EQ(run.exitStatus, 0);
        ExpectWarning(run, m_folder.GetPathOf(L"ganz/"));
    });
}

TEST_F(RunnerWithoutLocks, SubmitsToThisMachineWithAWarning)
{
    MakeDurations({1});
    CallWithoutLocks([this] {
        const SHostRun run = Submit({L"--shards", L"1"});

        EXPECT_EQ(run.exitStatus, 0) << run.output;
        ExpectWarning(run, GetOut());
        EXPECT_EQ(Submit({L"--shards", L"1", L"--force"}).exitStatus, 0);
    });
}

TEST_F(RunnerWithoutLocks, SuggestsResumingARunThatEndedEarly)
{
    m_folder.MakeFolder(L"data/CResultModel");
    CallWithoutLocks([this] {
        Run({L"run", L"--fail-fast"});

        ExpectLine(RunRunner({L"report", GetOut()}).output, "Fortsetzen:\n");
    });
}

} // namespace
