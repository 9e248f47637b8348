/// The command "run": a new run of the selection.

#include <algorithm>
#include <memory>

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/clock.h"
#include "testing/lutestsuiterunner/commands/caseorder.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/distributed.h"
#include "testing/lutestsuiterunner/commands/newrun.h"
#include "testing/lutestsuiterunner/commands/planned.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/planning.h"
#include "testing/lutestsuiterunner/journal/reader.h"

namespace Runner
{

namespace
{

/// 32 bits only, so that a user can type the seed.
std::uint64_t makeSeed()
{
    std::uint32_t seed = 0;
    LbOs::FillRandom(&seed, sizeof(seed));
    return seed;
}

/// Stores the seed in the options and in the arguments of the plan, so that a resumed run shuffles by the same seed.
void chooseSeed(SRunOptions& options)
{
    if (options.order != EOrder::Random)
    {
        return;
    }
    options.seed = options.seed ? *options.seed : makeSeed();
    const std::wstring order = LbFormat(L"random:%d", *options.seed);
    CTerminal::Get().WriteOutput(LbFormat(L"Reihenfolge: --order %s\n", order));
    // Placed after the user's own --order, because the last --order counts.
    const auto mark = std::ranges::find(options.arguments, L"--");
    options.arguments.insert(mark, L"--order=" + order);
}

} // namespace

int Execute(const SRunOptions& given)
{
    if (given.planned)
    {
        return RunPlanned(given);
    }
    SRunOptions options = given;
    RequirePrevious(options);
    RequireNoRun(options);
    MoveLibraryLinesToErrors();
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    // Read first, because the new run may replace this earlier run.
    const CPrevious previous = options.previous.empty() ? CPrevious() : CPrevious(options.previous);

    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    WarnOfMissingModules(options, setup);
    WarnOfLateFailures(options);
    chooseSeed(options);
    SSelection selection = SelectCases(setup);
    const std::vector<std::wstring> withoutFolder = std::move(selection.withoutFolder);
    WarnOfSuitesWithoutFolder(options, withoutFolder);
    SPlan plan = MakePlan(options, setup, std::move(selection));
    WarnOfInnerFolders(plan);
    WarnOfUselessOptions(options, plan);
    const std::size_t caseCount = ApplyOnlyFailed(options, previous, plan);
    const std::vector<std::wstring> problems = FindProblems(options, setup, caseCount, withoutFolder);
    const PreviousCases previousCases = FindPrevious(plan, previous);
    SelectShard(plan, previousCases);
    Quarantine quarantine;
    if (!options.quarantine.empty())
    {
        quarantine = ReadQuarantine(options.quarantine, setup, plan);
    }

    const std::unique_ptr<LbOs::CFolderLock> replaced = EndReplacedRun(GetRunFolder(options.out));
    CRunFolder folder(options.out);
    WarnOfMissingLock(folder.GetPath(), folder.IsLocked());
    const std::unique_ptr<CJournalWriter> writer = folder.BeginRun(plan);
    auto state = std::make_unique<CRunState>(std::move(plan));
    CarryOut({options, setup, environment, folder.GetPath(), *state, previousCases}, *writer, problems,
             OrderMissingCases(*state, options, previousCases));
    state.reset(); // to free its memory: Conclude reads the journal again
    return Conclude(folder.GetPath(), options.previous, std::move(quarantine));
}

} // namespace Runner
