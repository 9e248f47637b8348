/// The command "submit": a new run, whose shards run as local processes or as tasks of a scheduler.

#include <algorithm>
#include <thread>
#include <utility>

#include "base/lbcommandline.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/childprocess.h"
#include "base/os/files.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/cluster/expectedtimes.h"
#include "testing/lutestsuiterunner/cluster/follower.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/distributed.h"
#include "testing/lutestsuiterunner/commands/newrun.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/progress.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/planning.h"

namespace Runner
{

namespace
{

/// A scheduler needs an explicit number of shards, because the tasks do not run on the processors of this machine.
std::uint32_t chooseShardCount(const SSubmitOptions& options, const SEngineKind& engine)
{
    if (options.shards == 0 && !engine.isOfThisMachine)
    {
        throw LbFormat(L"Für %s fehlt die Zahl der Teile (--shards)", engine.name);
    }
    return options.shards != 0 ? options.shards : std::max(1U, std::thread::hardware_concurrency());
}

/// The options that the hosts of the shards need in addition to their plans.
std::vector<std::wstring> getTaskOptions(const SRunOptions& options)
{
    std::vector<std::wstring> words = {LbFormat(L"--retries=%u", options.retries)};
    if (options.confirm)
    {
        words.emplace_back(L"--confirm");
    }
    if (!options.core.empty())
    {
        // Tasks have another working directory until they have read their plan.
        words.push_back(L"--core=" + LbOs::GetFullPath(options.core));
    }
    words.emplace_back(L"--");
    words.insert(words.end(), options.library.begin(), options.library.end());
    return words;
}

/// The plan, and the problems that make the run red even if all its cases pass.
std::pair<SPlan, std::vector<std::wstring>> makePlan(const SSubmitOptions& options)
{
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.run.library);
    // Read first, because the new run may replace this earlier run.
    const CPrevious previous = options.run.previous.empty() ? CPrevious() : CPrevious(options.run.previous);
    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    WarnOfMissingModules(options.run, setup);
    SSelection selection = SelectCases(setup);
    const std::vector<std::wstring> withoutFolder = std::move(selection.withoutFolder);
    WarnOfSuitesWithoutFolder(options.run, withoutFolder);
    SPlan plan = MakePlan(options.run, setup, std::move(selection));
    WarnOfInnerFolders(plan);
    const std::size_t caseCount = ApplyOnlyFailed(options.run, previous, plan);
    std::vector<std::wstring> problems = FindProblems(options.run, setup, caseCount, withoutFolder);
    SetExpectedTimes(plan, FindPrevious(plan, previous));
    if (!options.run.quarantine.empty())
    {
        ReadQuarantine(options.run.quarantine, setup, plan);
    }
    return {std::move(plan), std::move(problems)};
}

/// Empty if no times are known.
std::wstring describeTimes(const SPlan& plan, std::uint32_t shards)
{
    constexpr std::uint64_t c_NanosecondsPerSecond = 1'000'000'000;
    std::uint64_t sum = 0;
    std::uint64_t longest = 0;
    for (const SPlannedCase& planned : plan.cases)
    {
        sum += planned.expected;
        longest = std::max(longest, planned.expected);
    }
    return sum == 0 ? std::wstring()
                    : LbFormat(L", erwartet je Teil: %s, mindestens der längste Testfall: %s",
                               FormatDuration(sum / shards / c_NanosecondsPerSecond),
                               FormatDuration(longest / c_NanosecondsPerSecond));
}

void describe(const SPlan& plan, std::uint32_t shards)
{
    const std::wstring cases =
        plan.cases.size() == 1 ? std::wstring(L"1 Testfall") : LbFormat(L"%u Testfälle", plan.cases.size());
    const std::wstring text = shards == 1 ? cases + L" in einem Teil" : LbFormat(L"%s in %u Teilen", cases, shards);
    CTerminal::Get().WriteOutput(text + describeTimes(plan, shards) + L"\n");
}

/// Starts a process that executes "wait". That process starts the shards and stays to the end of the run, because local
/// shards end with the process that started them.
void startFollower(const std::wstring& folder)
{
    LbOs::SChildOptions options;
    options.program = LbOs::GetExecutablePath();
    options.commandLine = LbCommandLine::Quote(options.program) + L" wait " + LbCommandLine::Quote(folder);
    options.isSilent = true;
    options.endsWithOwner = false;
    const auto process = LbOs::CChildProcess::Start(options);
    if (!process)
    {
        throw LbException(L"Der Prozess, der den Lauf begleitet, konnte nicht gestartet werden");
    }
    process->Detach();
}

int detach(const SDistributedRun& run)
{
    if (run.kind->isOfThisMachine)
    {
        startFollower(run.folder);
    }
    else
    {
        CFollower(run.folder, run.shards, *run.engine).Step(std::chrono::steady_clock::now());
    }
    CTerminal::Get().WriteOutput(
        LbFormat(L"Vergeben. LuTestSuiteRunner wait %s wartet auf das Ende und schreibt die Reports.\n", run.folder));
    return LuTestSuiteHost::c_Succeeded;
}

} // namespace

int Execute(const SSubmitOptions& options)
{
    const SEngineKind& engine = GetEngineKind(options.engine);
    const std::uint32_t shards = chooseShardCount(options, engine);
    engine.require(options.sbatch);
    RequireNoRun(options.run);
    RequirePrevious(options.run);
    MoveLibraryLinesToErrors();
    const std::wstring folder = GetRunFolder(options.run.out);
    auto [plan, problems] = makePlan(options);
    {
        const std::unique_ptr<LbOs::CFolderLock> replaced = EndReplacedRun(folder);
        const std::unique_ptr<LbOs::CFolderLock> lock = LockRunFolder(folder);
        WriteShards(folder, plan, shards, getTaskOptions(options.run), problems);
    }
    WarnOfUselessOptions(options.run, plan);
    describe(plan, shards);
    const SDistributedRun run = OpenDistributedRun(folder);
    return options.detach ? detach(run) : FollowToEnd(run);
}

} // namespace Runner
