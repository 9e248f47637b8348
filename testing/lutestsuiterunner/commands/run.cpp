/// The command "run": a new run of the selection.

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/clock.h"
#include "testing/lutestsuiterunner/commands/commands.h"
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

void requireNoRun(const SRunOptions& options)
{
    const std::wstring folder = GetRunFolder(options.out);
    if (!options.force && !FindJournals(folder).empty())
    {
        throw LbFormat(L"Der Ordner %s enthält schon einen Lauf: 'resume' setzt ihn fort, '--force' ersetzt ihn",
                       folder);
    }
}

/// Small enough to be typed.
std::uint64_t makeSeed()
{
    std::uint32_t seed = 0;
    LbOs::FillRandom(&seed, sizeof(seed));
    return seed;
}

std::uint64_t chooseSeed(const SRunOptions& options)
{
    const std::uint64_t seed = options.seed ? *options.seed : makeSeed();
    if (options.order == EOrder::Random)
    {
        CTerminal::Get().WriteOutput(LbFormat(L"Reihenfolge: --order random:%d\n", seed));
    }
    return seed;
}

std::vector<std::uint32_t> listShard(const SPlan& plan)
{
    std::vector<std::uint32_t> cases;
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        if (plan.cases[index].isInShard)
        {
            cases.push_back(index);
        }
    }
    return cases;
}

} // namespace

int Execute(const SRunOptions& options)
{
    checkOptions(options);
    requireNoRun(options);
    MoveLibraryLinesToErrors();
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    // Before a run that its folder holds is replaced.
    const CPrevious previous = options.previous.empty() ? CPrevious() : CPrevious(options.previous);

    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    SPlan plan = MakePlan(options, setup, SelectCases(setup));
    const std::vector<std::wstring> problems = FindProblems(options, setup, plan.cases.size());
    if (options.onlyFailed)
    {
        KeepFailed(plan, previous);
    }
    const PreviousCases previousCases = FindPrevious(plan, previous);
    SelectShard(plan, previousCases);
    Quarantine quarantine;
    if (!options.quarantine.empty())
    {
        quarantine = ReadQuarantine(options.quarantine, setup, plan);
    }
    std::vector<std::uint32_t> cases = listShard(plan);
    SortCases(cases, options.order, previousCases, chooseSeed(options));

    CRunFolder folder(options.out);
    const std::unique_ptr<CJournalWriter> writer = folder.BeginRun(plan);
    CRunState state(std::move(plan));
    CarryOut({options, setup, environment, folder, state, previousCases}, *writer, problems, cases);
    return Conclude(folder, options.previous, std::move(quarantine));
}

} // namespace Runner
