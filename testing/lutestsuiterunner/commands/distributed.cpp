#include "testing/lutestsuiterunner/commands/distributed.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <optional>
#include <thread>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/interruption.h"
#include "testing/lutestsuiterunner/cluster/follower.h"
#include "testing/lutestsuiterunner/cluster/proof.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/commands/outcome.h"
#include "testing/lutestsuiterunner/commands/shardsline.h"
#include "testing/lutestsuiterunner/commands/submitterlock.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/closing.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/selection.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/reports/summary.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

using Clock = std::chrono::steady_clock;

void writeLines(const std::wstring& path, const std::vector<std::wstring>& lines)
{
    std::string bytes;
    for (const std::wstring& line : lines)
    {
        bytes += LbEncoding::ToUtf8(line + L"\n");
    }
    WriteWholeFile(path, [&bytes](LuStreamWriteBinaryFile& file) { file.Write(bytes.data(), bytes.size()); });
}

int leave(const SDistributedRun& run)
{
    CTerminal::Get().WriteError(LbFormat(
        L"Warnung: Der Lauf geht ohne diesen Prozess weiter: LuTestSuiteRunner wait %s\n", QuoteForShell(run.folder)));
    return LbOs::GetExitStatus(LbOs::GetInterruption());
}

void sayThatItEnds(const SDistributedRun& run)
{
    CTerminal::Get().WriteError(LbFormat(L"Der Lauf, der in %s noch läuft, wird abgebrochen.\n", run.folder));
}

/// Makes the process that started the shards cancel them, and waits until that process has ended.
std::unique_ptr<LbOs::CFolderLock> endLocalTasks(const SDistributedRun& run)
{
    bool isHeld = false;
    std::unique_ptr<LbOs::CFolderLock> lock = TryAcquireSubmitterLock(run, isHeld);
    if (isHeld)
    {
        sayThatItEnds(run);
        MarkCanceled(run.folder);
    }
    // That process first waits for its tasks, up to sc_CancelLimit, and then writes the reports.
    const Clock::time_point end = Clock::now() + 2 * CFollower::sc_CancelLimit;
    for (; isHeld; lock = TryAcquireSubmitterLock(run, isHeld))
    {
        if (Clock::now() > end)
        {
            throw LbException(LbFormat(L"Der Lauf, der in %s noch läuft, endet nicht", run.folder));
        }
        std::this_thread::sleep_for(run.GetInterval());
    }
    return lock;
}

/// Cancels the tasks, and waits until the scheduler confirms that none is left. Warns if the scheduler does not confirm
/// that in time.
void endTasks(const SDistributedRun& run)
{
    MarkCanceled(run.folder);
    const std::vector<SSubmission> submissions = ReadSubmissions(run.folder);
    const Clock::time_point end = Clock::now() + CFollower::sc_CancelLimit;
    for (bool isFirst = true; !submissions.empty(); isFirst = false)
    {
        run.engine->Cancel(submissions);
        const std::optional<Tasks> tasks = run.engine->Poll(submissions);
        if (tasks && std::ranges::all_of(*tasks, [](const auto& one) { return one.second.state == ETaskState::Over; }))
        {
            return;
        }
        if (Clock::now() >= end)
        {
            CTerminal::Get().WriteError(LbFormat(L"Warnung: %s\n", c_UnconfirmedCancellation));
            return;
        }
        if (isFirst)
        {
            sayThatItEnds(run);
        }
        std::this_thread::sleep_for(run.engine->GetPollInterval());
    }
}

/// Opens the run that is to be replaced. If that fails, prints a warning and returns nothing.
std::optional<SDistributedRun> openReplacedRun(const std::wstring& folder)
{
    std::wstring reason;
    try
    {
        return OpenDistributedRun(folder);
    }
    catch (const LbException& exception)
    {
        reason = exception.GetMessageText();
    }
    catch (const std::wstring& message)
    {
        reason = message;
    }
    CTerminal::Get().WriteError(
        LbFormat(L"Warnung: Der Lauf in %s wird ersetzt, aber nicht abgebrochen: %s\n", folder, reason));
    return std::nullopt;
}

/// True if this process was asked to terminate while a scheduler runs the tasks. They continue without this process,
/// and only the user knows whether they should stop.
bool isToldToLeave(const SDistributedRun& run)
{
    return LbOs::GetInterruption() == LbOs::EInterruption::Terminate && !run.kind->isOfThisMachine;
}

void warn(CFollower& follower)
{
    for (const std::wstring& warning : follower.TakeWarnings())
    {
        CTerminal::Get().WriteError(LbFormat(L"Warnung: %s\n", warning));
    }
}

/// Follows the run to its end. Returns earlier if isToldToLeave returns true.
void follow(const SDistributedRun& run, CFollower& follower)
{
    CShardsLine line;
    while (!follower.Step(Clock::now()) && !isToldToLeave(run))
    {
        line.Show(follower, Clock::now());
        warn(follower);
        if (LbOs::GetInterruption() != LbOs::EInterruption::None && !follower.IsCanceled())
        {
            follower.Cancel();
        }
        else
        {
            std::this_thread::sleep_for(run.GetInterval());
        }
    }
    warn(follower);
}

/// True if the run has ended, so that its reports do not change any more.
bool hasProof(const SDistributedRun& run)
{
    return LbFileSystem::IsFile(run.folder + c_ProofName);
}

void writeEnd(const SDistributedRun& run, const CFollower& follower)
{
    std::vector<std::wstring> problems = ReadPlannedProblems(run.folder);
    std::ranges::move(follower.GetProblems(), std::back_inserter(problems));
    writeLines(run.folder + c_ProblemsName, problems);
    writeLines(GetLossesPath(run.folder), follower.GetLosses());
}

/// Called before the run is followed, so that the user learns early of an error in the file.
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

std::unique_ptr<LbOs::CFolderLock> EndReplacedRun(const std::wstring& folder)
{
    const bool isDistributed = LbFileSystem::IsFile(folder + c_ShardsName);
    const std::optional<SDistributedRun> run = isDistributed ? openReplacedRun(folder) : std::nullopt;
    if (run && run->kind->isOfThisMachine)
    {
        return endLocalTasks(*run);
    }
    if (run)
    {
        endTasks(*run);
    }
    return nullptr;
}

int FollowToEnd(const SDistributedRun& run)
{
    LbOs::CatchInterruptions();
    Quarantine quarantine = readQuarantine(run);
    bool isHeld = false;
    const std::unique_ptr<LbOs::CFolderLock> lock =
        run.kind->isOfThisMachine ? AcquireSubmitterLock(run, isHeld) : nullptr;
    if (isHeld)
    {
        return leave(run);
    }
    if (run.kind->isOfThisMachine)
    {
        WarnOfMissingLock(run.folder, lock != nullptr);
    }
    CFollower follower(run.folder, run.shards, *run.engine);
    if (!hasProof(run))
    {
        follow(run, follower);
    }
    if (isToldToLeave(run))
    {
        return leave(run);
    }
    follower.RequireSameRun();
    // Another process may have written the proof meanwhile. Records that hosts have written since then do not count.
    const bool isProven = hasProof(run);
    if (!isProven)
    {
        writeEnd(run, follower);
    }
    std::vector<SReadPart> parts;
    const std::unique_ptr<CRunState> state = LoadDistributedRun(run.folder, parts);
    ReportState(run.folder, *state);
    if (!isProven)
    {
        WriteProof(run.folder, *state, parts, run.shards, follower);
    }
    ConcludeQuarantine(*state, run.folder, run.options.run.previous, std::move(quarantine));
    WarnOfReceived(state->GetPlan());
    const int interrupted = LbOs::GetExitStatus(LbOs::GetInterruption());
    return interrupted != 0 ? interrupted : GetStatus(*state);
}

} // namespace Runner
