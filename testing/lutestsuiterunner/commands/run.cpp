/// The command "run": a new run of the selection.

#include <algorithm>
#include <memory>

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/clock.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/distributed.h"
#include "testing/lutestsuiterunner/commands/planned.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/innerfolders.h"
#include "testing/lutestsuiterunner/execution/planning.h"
#include "testing/lutestsuiterunner/journal/reader.h"

namespace Runner
{

namespace
{

void checkOptions(const SRunOptions& options)
{
    if (options.onlyFailed && options.previous.empty())
    {
        throw std::wstring(L"Die Option '--only-failed' braucht '--previous'");
    }
    const bool needsPrevious = options.order == EOrder::FailedFirst || options.order == EOrder::LongestFirst;
    if (needsPrevious && options.previous.empty())
    {
        throw std::wstring(L"Diese Reihenfolge braucht '--previous'");
    }
}

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
    // Placed after the user's own --order, because the last one counts.
    const auto mark = std::ranges::find(options.arguments, L"--");
    options.arguments.insert(mark, L"--order=" + order);
}

/// Removes the cases that did not fail in the earlier run. Returns the number of cases that the guards have to check.
std::size_t applyOnlyFailed(const SRunOptions& options, const CPrevious& previous, SPlan& plan)
{
    const std::size_t selected = plan.cases.size();
    if (options.onlyFailed)
    {
        KeepFailed(plan, previous);
    }
    if (!options.onlyFailed || selected == 0 || !plan.cases.empty())
    {
        return plan.cases.size();
    }
    CTerminal::Get().WriteOutput(
        LbFormat(L"Im früheren Lauf %s ist kein Testfall der Auswahl fehlgeschlagen\n", options.previous));
    return selected;
}

void warnOfInnerFolders(const SPlan& plan)
{
    for (const SInnerFolder& one : FindInnerFolders(plan.dataDirectory, plan.unitTests))
    {
        CTerminal::Get().WriteError(
            LbFormat(L"Warnung: %s hat keine Datei für einen Testfall, aber %s: Ordner im Ordner einer Klasse werden "
                     L"nicht durchsucht\n",
                     one.classFolder, one.inner));
    }
}

} // namespace

int Execute(const SRunOptions& given)
{
    if (given.planned)
    {
        return RunPlanned(given);
    }
    SRunOptions options = given;
    checkOptions(options);
    RequireNoRun(options);
    MoveLibraryLinesToErrors();
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    // Read before the earlier run in the folder is replaced.
    const CPrevious previous = options.previous.empty() ? CPrevious() : CPrevious(options.previous);

    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    chooseSeed(options);
    SPlan plan = MakePlan(options, setup, SelectCases(setup));
    warnOfInnerFolders(plan);
    const std::size_t caseCount = applyOnlyFailed(options, previous, plan);
    const std::vector<std::wstring> problems = FindProblems(options, setup, caseCount);
    const PreviousCases previousCases = FindPrevious(plan, previous);
    SelectShard(plan, previousCases);
    Quarantine quarantine;
    if (!options.quarantine.empty())
    {
        quarantine = ReadQuarantine(options.quarantine, setup, plan);
    }

    const std::unique_ptr<LbOs::CFolderLock> replaced = EndReplacedRun(GetRunFolder(options.out));
    CRunFolder folder(options.out);
    const std::unique_ptr<CJournalWriter> writer = folder.BeginRun(plan);
    CRunState state(std::move(plan));
    CarryOut({options, setup, environment, folder.GetPath(), state, previousCases}, *writer, problems,
             OrderMissingCases(state, options, previousCases));
    return Conclude(folder.GetPath(), options.previous, std::move(quarantine));
}

} // namespace Runner
