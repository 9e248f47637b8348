#include "testing/lutestsuiterunner/commands/distributed.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/folderlock.h"
#include "base/os/interruption.h"
#include "testing/lutestsuiterunner/cluster/proof.h"
#include "testing/lutestsuiterunner/commands/outcome.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/progress.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/selection.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"
#include "testing/lutestsuiterunner/settings/commandline.h"

namespace Runner
{

namespace
{

using Clock = std::chrono::steady_clock;

/// The more shards, the longer the interval, because each step asks for the journals of all shards.
std::chrono::milliseconds getInterval(std::size_t shards)
{
    constexpr std::chrono::milliseconds c_Least(200);
    constexpr std::chrono::milliseconds c_PerShard(10);
    constexpr std::chrono::milliseconds c_Most(15'000);
    return std::clamp(c_PerShard * static_cast<std::int64_t>(shards), c_Least, c_Most);
}

/// One line that tells how far the run is: rewritten on a terminal, else every 30 seconds.
class CShardsLine : public INonCopyable
{
public:
    ~CShardsLine() { CTerminal::Get().ShowStatus(L""); }

    void Show(const CFollower& follower, Clock::time_point now)
    {
        constexpr std::chrono::seconds c_Interval(30);
        const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(now - m_start).count();
        const std::wstring text =
            LbFormat(L"%s, Zeit: %s", FormatShards(follower), FormatDuration(static_cast<std::uint64_t>(elapsed)));
        if (CTerminal::Get().HasStatus())
        {
            CTerminal::Get().ShowStatus(text);
        }
        else if (now >= m_next)
        {
            m_next = now + c_Interval;
            CTerminal::Get().WriteError(text + L"\n");
        }
    }

private:
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_next = m_start + std::chrono::seconds(30);
};

void writeProblems(const std::wstring& folder, const std::vector<std::wstring>& problems)
{
    std::string bytes;
    for (const std::wstring& problem : problems)
    {
        bytes += LbEncoding::ToUtf8(problem + L"\n");
    }
    WriteWholeFile(folder + c_ProblemsName,
                   [&bytes](LuStreamWriteBinaryFile& file) { file.Write(bytes.data(), bytes.size()); });
}

/// Local shards belong to the process that started them. Another process takes over only when that one has ended.
std::unique_ptr<LbOs::CFolderLock> acquire(const SDistributedRun& run)
{
    std::unique_ptr<LbOs::CFolderLock> lock;
    while (run.options.engine == EEngine::Local && !lock && LbOs::GetInterruption() == LbOs::EInterruption::None)
    {
        lock = LbOs::CFolderLock::TryAcquire(run.folder + c_TasksFolderName);
        if (!lock)
        {
            std::this_thread::sleep_for(getInterval(run.shards.size()));
        }
    }
    return lock;
}

void follow(const SDistributedRun& run, CFollower& follower)
{
    CShardsLine line;
    while (!follower.Step(Clock::now()))
    {
        line.Show(follower, Clock::now());
        if (LbOs::GetInterruption() != LbOs::EInterruption::None && !follower.IsCanceled())
        {
            follower.Cancel();
        }
        else
        {
            std::this_thread::sleep_for(getInterval(run.shards.size()));
        }
    }
}

/// Read before the run, so that the user learns early that the file is wrong.
Quarantine readQuarantine(const SDistributedRun& run)
{
    if (run.options.run.quarantine.empty())
    {
        return {};
    }
    EnterWorkingDirectory(run.plan);
    return ReadQuarantineOf(run.options.run, ReadLibraryOptions(run.options.run.library), run.plan);
}

} // namespace

SDistributedRun OpenDistributedRun(const std::wstring& directory)
{
    if (directory.empty())
    {
        throw std::wstring(L"Der Ordner des Laufs fehlt");
    }
    SDistributedRun run;
    run.folder = GetRunFolder(directory);
    run.shards = ReadShards(run.folder);
    run.plan = ReadPlan(run.folder + c_PlanName);
    std::vector<std::wstring> arguments = {L"LuTestSuiteRunner"};
    arguments.insert(arguments.end(), run.plan.arguments.begin(), run.plan.arguments.end());
    run.options = std::get<SSubmitOptions>(ReadCommandLine(arguments));
    RequireEngine(run.options.engine);
    run.engine = MakeEngine(run.options.engine, {run.folder, run.plan.runId, run.plan.partCount, run.options.sbatch});
    return run;
}

std::wstring FormatShards(const CFollower& follower)
{
    std::size_t ended = 0;
    std::size_t running = 0;
    std::uint64_t cases = 0;
    std::uint64_t done = 0;
    std::uint64_t failed = 0;
    for (const SShardStatus& shard : follower.GetShards())
    {
        ended += shard.isEnded ? 1 : 0;
        running += !shard.isEnded && (shard.task.state == ETaskState::Running || shard.hasBegun) ? 1 : 0;
        cases += shard.cases;
        done += shard.done;
        failed += shard.failed;
    }
    return LbFormat(L"Teile: %u von %u fertig, %u laufen, Fälle: %u/%u, fehlgeschlagen: %u%s", ended,
                    follower.GetShards().size(), running, done, cases, failed,
                    follower.HasAnswer() ? L"" : L", der Scheduler antwortet nicht");
}

int FollowToEnd(const SDistributedRun& run)
{
    LbOs::CatchInterruptions();
    Quarantine quarantine = readQuarantine(run);
    const std::unique_ptr<LbOs::CFolderLock> lock = acquire(run);
    CFollower follower(run.folder, run.shards, *run.engine);
    follow(run, follower);
    writeProblems(run.folder, follower.GetProblems());
    const std::unique_ptr<CRunState> state = ReportRun(run.folder);
    WriteProof(run.folder, *state, run.shards, follower);
    ConcludeQuarantine(*state, run.folder, run.options.run.previous, std::move(quarantine));
    WarnOfReceived(state->GetPlan());
    const int interrupted = LbOs::GetExitStatus(LbOs::GetInterruption());
    return interrupted != 0 ? interrupted : GetStatus(*state);
}

} // namespace Runner
