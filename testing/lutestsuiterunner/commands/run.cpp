/// The command "run": a new run of the selection.

#include <algorithm>
#include <memory>
#include <span>
#include <string_view>

#include "base/lbexception.h"
#include "base/lbfilelisting.h"
#include "base/lbformat.h"
#include "base/lbreceivedfile.h"
#include "base/os/clock.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/closing.h"
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
    // The last one counts.
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

/// Differences from references of earlier runs that nobody has decided on.
void warnOfReceived(const SPlan& plan)
{
    constexpr std::wstring_view c_Wildcards[] = {LbReceivedFile::c_Pattern};
    std::size_t count = 0;
    std::wstring first;
    for (const LuTestSuite::SUnitTest& unitTest : plan.unitTests)
    {
        const std::shared_ptr<const LbFileListing> files = LbFileListing::Get(unitTest.dataDirectory);
        const std::span<const std::uint32_t> ranks = files->GetMatches({c_Wildcards, {}});
        if (count == 0 && !ranks.empty())
        {
            first = unitTest.dataDirectory + std::wstring(files->GetName(ranks.front()));
        }
        count += ranks.size();
    }
    if (count > 0)
    {
        CTerminal::Get().WriteError(LbFormat(L"Warnung: %s und %u weitere .received-Dateien sind nicht geprüft: "
                                             L"LuTestSuiteRunner review %s\n",
                                             first, count - 1, QuoteForShell(plan.dataDirectory)));
    }
}

} // namespace

int Execute(const SRunOptions& given)
{
    SRunOptions options = given;
    checkOptions(options);
    requireNoRun(options);
    MoveLibraryLinesToErrors();
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    // Before the folder's earlier run is replaced.
    const CPrevious previous = options.previous.empty() ? CPrevious() : CPrevious(options.previous);

    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    chooseSeed(options);
    SPlan plan = MakePlan(options, setup, SelectCases(setup));
    const std::size_t caseCount = applyOnlyFailed(options, previous, plan);
    warnOfReceived(plan);
    const std::vector<std::wstring> problems = FindProblems(options, setup, caseCount);
    const PreviousCases previousCases = FindPrevious(plan, previous);
    SelectShard(plan, previousCases);
    Quarantine quarantine;
    if (!options.quarantine.empty())
    {
        quarantine = ReadQuarantine(options.quarantine, setup, plan);
    }

    CRunFolder folder(options.out);
    const std::unique_ptr<CJournalWriter> writer = folder.BeginRun(plan);
    CRunState state(std::move(plan));
    CarryOut({options, setup, environment, folder, state, previousCases}, *writer, problems,
             OrderMissingCases(state, options, previousCases));
    return Conclude(folder, options.previous, std::move(quarantine));
}

} // namespace Runner
