/// The command "resume": the rest of an interrupted run.

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/commands/commands.h"
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

/// If the earlier run is gone, or this run has replaced it, only the order and the estimate suffer.
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
    // If a host ended between writing its plan and its journal, the run has not begun.
    if (!LbFileSystem::IsFile(path + c_PlanName))
    {
        throw LbFormat(L"Der Ordner %s enthält keinen Lauf", path);
    }
    CRunFolder folder(path);
    const std::unique_ptr<CRunState> state = LoadRun(path);
    SRunOptions options = EnterRun(state->GetPlan());
    options.confirm = options.confirm || resume.confirm;
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    Quarantine quarantine = ReadQuarantineOf(options, setup, state->GetPlan());
    if (IsComplete(*state, {options.retries, options.confirm}))
    {
        CTerminal::Get().WriteOutput(LbFormat(L"Der Lauf in %s ist vollständig: es gibt nichts fortzusetzen\n", path));
        // The host may have ended before it wrote the reports.
        return Conclude(path, options.previous, std::move(quarantine));
    }

    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    // The number of cases was checked before the plan was made.
    SRunOptions guards = options;
    guards.minCases = 0;
    const std::vector<std::wstring> problems = FindProblems(guards, setup, state->GetPlan().cases.size());
    const PreviousCases previous = findPrevious(options, folder, state->GetPlan());
    const std::vector<std::uint32_t> cases = OrderMissingCases(*state, options, previous);
    const std::unique_ptr<CJournalWriter> writer = folder.ContinueRun(state->GetPlan());
    CarryOut({options, setup, environment, folder.GetPath(), *state, previous}, *writer, problems, cases);
    return Conclude(folder.GetPath(), options.previous, std::move(quarantine));
}

} // namespace Runner
