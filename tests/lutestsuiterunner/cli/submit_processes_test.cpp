/// Several processes that use one distributed run of this machine.

#include <chrono>
#include <filesystem>
#include <future>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/files.h"
#include "base/os/folderlock.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "tests/lutestsuiterunner/cli/distributedtest.h"
#include "tests/support/places.h"

namespace
{

class RunnerSubmitProcesses : public DistributedTest
{
protected:
    std::wstring GetShard() const { return GetOut() + Runner::GetShardFolderName(1); }

    /// The records of one type in a journal of the shard.
    template<typename T>
    std::vector<T> Find(std::uint32_t journal) const
    {
        std::vector<T> records;
        Runner::CJournalReader reader(GetShard(), journal);
        for (Runner::Record record; reader.Next(record);)
        {
            if (const T* const one = std::get_if<T>(&record))
            {
                records.push_back(*one);
            }
        }
        return records;
    }

    /// Begins a run of a very long case in the background, and waits until its host runs.
    void BeginLongRun() const
    {
        MakeDurations({600'000, 1});
        Submit({L"--shards", L"1", L"--detach"}, {L"-i", L":0.ms$"});
        WaitUntil([this] { return LbFileSystem::IsFile(GetShard() + Runner::GetJournalName(1)); });
    }

    static std::vector<std::wstring> SelectShortCase() { return {L"-i", L":1.ms$"}; }

    template<typename F>
    static void WaitUntil(const F& condition)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(3);
        while (!condition())
        {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
        }
    }
};

TEST_F(RunnerSubmitProcesses, CancelARunThatIsReplacedByAnotherDistributedRun)
{
    BeginLongRun();
    const SHostRun run = Submit({L"--shards", L"2", L"--force"}, SelectShortCase());

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.errors, "Der Lauf, der in " + LbEncoding::ToUtf8(GetOut()) + " noch läuft, wird abgebrochen.\n");
    ExpectProof(GetOut());
}

TEST_F(RunnerSubmitProcesses, CancelARunThatIsReplacedByARunInOneProcess)
{
    BeginLongRun();
    const SHostRun run = Run({L"run", L"--force"}, SelectShortCase());

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.errors, " noch läuft, wird abgebrochen.\n");
}

TEST_F(RunnerSubmitProcesses, DoNotReplaceARunInOneProcessThatIsInProgress)
{
    MakeDurations({1});
    Run({L"run"});
    // The lock makes the run look alive.
    const auto lock = LbOs::CFolderLock::TryAcquire(GetOut());
    const SHostRun run = Submit({L"--shards", L"1", L"--force"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors,
               "Fehler: In den Ordner " + LbEncoding::ToUtf8(GetOut()) + " schreibt schon ein anderer Lauf");
    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + Runner::GetJournalName(1)));
    EXPECT_FALSE(LbFileSystem::Exists(GetOut() + Runner::c_ShardsName));
}

TEST_F(RunnerSubmitProcesses, WarnOfAReplacedRunThatTheyCannotCancel)
{
    MakeDurations({1});
    Submit({L"--shards", L"1"});
    m_folder.WriteFile(L"out/shards.json", "{");
    const SHostRun run = Submit({L"--shards", L"1", L"--force"});

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.errors, " wird ersetzt, aber nicht abgebrochen: Die Liste der Teile ");
}

TEST_F(RunnerSubmitProcesses, ShareTheCasesOfAShardThatWasStartedTwice)
{
    constexpr std::size_t c_Cases = 14;
    MakeDurations(std::vector<int>(c_Cases, 0));
    Submit({L"--shards", L"1"});
    LbOs::RemoveFile(GetOut() + Runner::c_ProofName);
    LbOs::RemoveFile(GetShard() + Runner::GetJournalName(1));
    MakeDurations(std::vector<int>(c_Cases, 300));
    const auto runShard = [this] {
        return RunRunner({L"run", L"--planned", L"--shard", L"1/1", L"--out", GetShard()}).exitStatus;
    };
    auto other = std::async(std::launch::async, runShard);
    runShard();
    other.wait();

    const std::size_t verdicts = Find<Runner::SCaseEnded>(1).size() + Find<Runner::SCaseEnded>(2).size();
    // The first host may notice the second one only after a second. From then on, each may repeat a case of the other.
    EXPECT_GE(verdicts, c_Cases);
    EXPECT_LE(verdicts, c_Cases + 5);
    EXPECT_EQ(RunRunner({L"wait", GetOut()}).exitStatus, 0);
    ExpectProof(GetOut());
}

TEST_F(RunnerSubmitProcesses, PostponeACaseThatAnotherHostRuns)
{
    MakeDurations({0, 0, 0, 0});
    Submit({L"--shards", L"1"});
    LbOs::RemoveFile(GetOut() + Runner::c_ProofName);
    const auto started = Find<Runner::SCaseStarted>(1);
    ASSERT_EQ(started.size(), 4U);
    LbOs::RemoveFile(GetShard() + Runner::GetJournalName(1));
    const auto other = Runner::JoinRun(GetShard(), Runner::ReadPlan(GetShard() + Runner::c_PlanName));
    other->Write(started[3]);
    RunRunner({L"run", L"--planned", L"--shard", L"1/1", L"--out", GetShard()});

    const auto again = Find<Runner::SCaseStarted>(2);
    ASSERT_EQ(again.size(), 4U);
    EXPECT_EQ(again[3].caseIndex, started[3].caseIndex);
    EXPECT_EQ(again[0].processId, again[2].processId);
    EXPECT_NE(again[3].processId, again[0].processId);
}

/// A shard whose first host was canceled while it ran the first case.
class RunnerSubmitCanceled : public RunnerSubmitProcesses
{
protected:
    /// Makes a shard of four cases with a journal that contains the start of the first case and these records.
    void MakeCanceled(const std::vector<Runner::Record>& records, const std::vector<std::wstring>& library) const
    {
        MakeDurations({0, 0, 0, 0});
        Submit({L"--shards", L"1"}, library);
        LbOs::RemoveFile(GetOut() + Runner::c_ProofName);
        // The cases have no times, so a host runs them in the listed order.
        ASSERT_EQ(GetStarted(1), (std::vector<std::uint32_t>{0, 1, 2, 3}));
        LbOs::RemoveFile(GetShard() + Runner::GetJournalName(1));
        const auto other = Runner::JoinRun(GetShard(), Runner::ReadPlan(GetShard() + Runner::c_PlanName));
        other->Write(Runner::SCaseStarted{});
        for (const Runner::Record& record : records)
        {
            other->Write(record);
        }
    }

    /// The records of a canceled host that has ended its first case.
    static std::vector<Runner::Record> GetCanceledEnd()
    {
        Runner::SCaseEnded ended;
        ended.end = Runner::EAttemptEnd::Canceled;
        ended.info.result = LuTestSuiteRun::ECaseRunResult::Canceled;
        return {ended, Runner::SRunCanceled{L"Ende verlangt", 3}, Runner::SRunFinished{L"", 4}};
    }

    /// Runs another host of the shard, and expects that it runs the first case after all others.
    void ExpectFirstCaseLast() const
    {
        RunRunner({L"run", L"--planned", L"--shard", L"1/1", L"--out", GetShard()});
        EXPECT_EQ(GetStarted(2), (std::vector<std::uint32_t>{1, 2, 3, 0}));
        EXPECT_EQ(RunRunner({L"wait", GetOut()}).exitStatus, 0);
        ExpectProof(GetOut());
    }

    /// Expects that the other host ran the first case in a child process, and the other cases in its own process.
    void ExpectOwnProcess() const
    {
        const auto again = Find<Runner::SCaseStarted>(2);
        ASSERT_EQ(again.size(), 4U);
        EXPECT_EQ(again[0].processId, again[2].processId);
        EXPECT_NE(again[3].processId, again[0].processId);
    }

private:
    /// The cases in the order in which the host with this journal started them.
    std::vector<std::uint32_t> GetStarted(std::uint32_t journal) const
    {
        std::vector<std::uint32_t> cases;
        for (const Runner::SCaseStarted& started : Find<Runner::SCaseStarted>(journal))
        {
            cases.push_back(started.caseIndex);
        }
        return cases;
    }
};

TEST_F(RunnerSubmitCanceled, RunsTheOpenCaseLastAndInItsOwnProcess)
{
    ASSERT_NO_FATAL_FAILURE(MakeCanceled({Runner::SRunCanceled{L"Ende verlangt", 3}}, {}));
    ExpectFirstCaseLast();
    ExpectOwnProcess();
}

TEST_F(RunnerSubmitCanceled, RunsTheCaseLastIfItsChildProcessWasEnded)
{
    ASSERT_NO_FATAL_FAILURE(MakeCanceled(GetCanceledEnd(), {L"-x"}));
    ExpectFirstCaseLast();
}

TEST_F(RunnerSubmitCanceled, RunsTheCanceledCaseLastAndInItsOwnProcess)
{
    ASSERT_NO_FATAL_FAILURE(MakeCanceled(GetCanceledEnd(), {}));
    ExpectFirstCaseLast();
    ExpectOwnProcess();
}

/// The command "wait" on a terminal, while this process owns the run.
class RunnerSubmitWaiting : public RunnerSubmitProcesses
{
protected:
    void SetUp() override
    {
        if (!CanRunHostOnTerminal())
        {
            GTEST_SKIP() << "programs cannot run on a terminal here";
        }
        MakeDurations({1});
        Submit({L"--shards", L"1"});
        m_lock = LbOs::CFolderLock::TryAcquire(GetOut() + Runner::c_TasksFolderName);
        ASSERT_NE(m_lock, nullptr);
    }

    /// Starts the command, and returns when it shows this progress.
    void Begin(const std::string& progress)
    {
        const std::wstring output = m_folder.WriteFile(L"output", "");
        SHostOptions options;
        options.onTerminal = true;
        options.outputDevice = output;
        options.program =
            m_folder.WriteFile(L"start", "#!/bin/sh\necho $$ >'" + LbEncoding::ToUtf8(m_folder.GetPathOf(L"process")) +
                                             "'\nexec \"$@\"\n");
        std::filesystem::permissions(options.program, std::filesystem::perms::owner_all);
        m_run = std::async(std::launch::async, [this, options] {
            return RunHost({L"" LUTESTSUITE_RUNNER, L"wait", GetOut()}, options);
        });
        WaitUntil([&] { return LbFileSystem::ReadFile8Bit(output).find(progress) != std::string::npos; });
    }

    /// Sends the signal of this name to the process of the command.
    void Send(const std::wstring& signal) const
    {
        std::string process = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"process"));
        process.pop_back();
        SHostOptions options;
        options.program = L"/bin/sh";
        RunHost({L"-c", L"kill -" + signal + L" " + LbEncoding::FromUtf8(process)}, options);
    }

    bool IsMarkedCanceled() const { return LbFileSystem::IsFile(GetOut() + LbPath::ToNative(L"tasks/canceled")); }

    std::future<SHostRun> m_run;
    // After m_run, so that the lock is released before the destructor of m_run waits for the command.
    std::unique_ptr<LbOs::CFolderLock> m_lock;
};

TEST_F(RunnerSubmitWaiting, ShowsTheProgressOfTheRun)
{
    Begin("Teile: 1 von 1 fertig, 0 laufen, Fälle: 1/1");
    m_lock.reset();

    EXPECT_EQ(m_run.get().exitStatus, 0);
}

TEST_F(RunnerSubmitWaiting, LeavesTheReportsToTheOwnerOfTheRunAfterCtrlC)
{
    LbOs::RemoveFile(GetShard() + Runner::GetJournalName(1));
    LbOs::RemoveFile(GetOut() + Runner::c_XmlReportName);
    Begin("Teile: 0 von 1 fertig");
    Send(L"INT");
    WaitUntil([this] { return IsMarkedCanceled(); });
    // Running the shard takes longer than writing reports. If "wait" wrote the reports, they would exist by then.
    RunRunner({L"run", L"--planned", L"--shard", L"1/1", L"--out", GetShard()});
    EXPECT_FALSE(LbFileSystem::IsFile(GetOut() + Runner::c_XmlReportName));
    m_lock.reset();

    EXPECT_EQ(m_run.get().exitStatus, 130);
    EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + Runner::c_XmlReportName));
}

TEST_F(RunnerSubmitWaiting, EndsWithoutCancelingTheRunIfItIsTerminated)
{
    Begin("Teile: 1 von 1 fertig");
    Send(L"TERM");

    EXPECT_EQ(m_run.get().exitStatus, 143);
    EXPECT_FALSE(IsMarkedCanceled());
}

} // namespace
