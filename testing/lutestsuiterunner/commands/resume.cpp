/// The command "resume": executes the rest of an interrupted run.

#include <algorithm>
#include <utility>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/commands/caseorder.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/missingparts.h"
#include "testing/lutestsuiterunner/commands/plandifference.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/planning.h"
#include "testing/lutestsuiterunner/execution/stages.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/reader.h"

namespace Runner
{

namespace
{

/// If the earlier run is gone, or this run has replaced it, returns no times and no failures: only the order of the
/// cases and the estimate of the remaining time are then worse.
PreviousCases findPrevious(const SRunOptions& options, const CRunFolder& folder, const SPlan& plan)
{
    const bool isOwn = LbOs::AreSameFile(options.previous, folder.GetPath());
    if (!options.previous.empty() && !isOwn && LbFileSystem::Exists(options.previous))
    {
        return FindPrevious(plan, CPrevious(options.previous));
    }
    const bool needsPrevious = options.order == EOrder::FailedFirst || options.order == EOrder::LongestFirst;
    if (needsPrevious)
    {
        CTerminal::Get().WriteError(
            LbFormat(L"Warnung: Den früheren Lauf %s gibt es nicht mehr; die übrigen Testfälle laufen wie gelistet\n",
                     options.previous));
    }
    return PreviousCases(plan.cases.size());
}

/// Reasons that make the whole run red. The plan lacks the cases of a module that was missing when the plan was made,
/// so the problems of the interrupted run remain.
std::vector<std::wstring> findProblems(const SRunOptions& options, const LuTestSuiteSetup& setup,
                                       const CRunState& state)
{
    SRunOptions guards = options;
    const std::size_t caseCount = state.GetPlan().cases.size();
    // If --only-failed found no failed case, the first call checked the size of the selection, and the plan does not
    // contain that size.
    guards.minCases = options.onlyFailed && caseCount == 0 ? 0 : options.minCases;
    std::vector<std::wstring> problems = state.GetProblems();
    for (std::wstring& problem : FindProblems(guards, setup, caseCount))
    {
        if (std::ranges::find(problems, problem) == problems.end())
        {
            problems.push_back(std::move(problem));
        }
    }
    return problems;
}

/// Throws if a folder or a class is missing. A case of a missing class would get a final verdict, and no later call
/// would run the case again.
void requireParts(const SPlan& plan)
{
    if (const std::wstring folder = FindMissingFolder(plan); !folder.empty())
    {
        throw LbFormat(L"Zum Fortsetzen fehlt der Ordner %s", folder);
    }
    if (const std::wstring name = FindMissingClass(plan); !name.empty())
    {
        throw LbFormat(L"Zum Fortsetzen fehlt die Klasse %s", name);
    }
}

void warnOfOtherBuild(const SPlan& plan, const std::wstring& folder)
{
    if (!HaveSameBuild(plan.origin, DescribeOrigin()))
    {
        CTerminal::Get().WriteError(
            LbFormat(L"Warnung: Der Lauf in %s und seine Fortsetzung haben verschiedene Builds\n", folder));
    }
}

} // namespace

int Execute(const SResumeOptions& resume)
{
    if (resume.directory.empty())
    {
        throw std::wstring(L"Der Ordner des Laufs fehlt");
    }
    MoveLibraryLinesToErrors();
    const std::wstring path = GetRunFolder(resume.directory);
    if (LbFileSystem::IsFile(path + c_ShardsName))
    {
        throw LbFormat(L"Der Lauf in %s ist verteilt: 'wait' setzt ihn fort", path);
    }
    // Only the plan is required: a host may have ended after it wrote the plan and before it began a journal.
    if (!LbFileSystem::IsFile(path + c_PlanName))
    {
        throw LbFormat(L"Der Ordner %s enthält keinen Lauf", path);
    }
    CRunFolder folder(path);
    WarnOfMissingLock(path, folder.IsLocked());
    std::unique_ptr<CRunState> state = LoadRun(path);
    SRunOptions options = EnterRun(state->GetPlan());
    options.confirm = options.confirm || resume.confirm;
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    Quarantine quarantine = ReadQuarantineOf(options, setup, state->GetPlan());
    if (IsComplete(*state, {options.retries, options.confirm}))
    {
        CTerminal::Get().WriteOutput(LbFormat(L"Der Lauf in %s ist vollständig: es gibt nichts fortzusetzen\n", path));
        state.reset(); // because Conclude reads the journals again
        // The host may have ended before it wrote the reports.
        return Conclude(path, options.previous, std::move(quarantine));
    }

    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    WarnOfMissingModules(options, setup);
    requireParts(state->GetPlan());
    warnOfOtherBuild(state->GetPlan(), path);
    const std::vector<std::wstring> problems = findProblems(options, setup, *state);
    WarnOfUselessOptions(options, state->GetPlan());
    const PreviousCases previous = findPrevious(options, folder, state->GetPlan());
    const std::vector<std::uint32_t> cases = OrderMissingCases(*state, options, previous);
    const std::unique_ptr<CJournalWriter> writer = folder.ContinueRun(state->GetPlan());
    CarryOut({options, setup, environment, folder.GetPath(), *state, previous}, *writer, problems, cases);
    state.reset();
    return Conclude(folder.GetPath(), options.previous, std::move(quarantine));
}

} // namespace Runner
