/// The command "resume": the rest of a run that was broken off.

#include <variant>

#include "base/lbformat.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/planning.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/settings/commandline.h"

namespace Runner
{

namespace
{

/// The options with which the run began.
SRunOptions readOptions(const SPlan& plan)
{
    std::vector<std::wstring> arguments = {L"LuTestSuiteRunner"};
    arguments.insert(arguments.end(), plan.arguments.begin(), plan.arguments.end());
    Command command = ReadCommandLine(arguments);
    if (SRunOptions* const options = std::get_if<SRunOptions>(&command))
    {
        return std::move(*options);
    }
    throw std::wstring(L"Dieser Lauf ist aus mehreren zusammengefügt und kann nicht fortgesetzt werden");
}

/// Paths of the options count from there.
void enterWorkingDirectory(const SPlan& plan)
{
    if (!LbOs::SetWorkingDirectory(plan.workingDirectory))
    {
        throw LbFormat(L"Das Arbeitsverzeichnis %s des Laufs gibt es nicht mehr", plan.workingDirectory);
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
    if (FindJournals(path).empty())
    {
        throw LbFormat(L"Der Ordner %s enthält keinen Lauf", path);
    }
    CRunFolder folder(path);
    const std::unique_ptr<CRunState> state = LoadRun(path);
    enterWorkingDirectory(state->GetPlan());
    SRunOptions options = readOptions(state->GetPlan());
    options.confirm = options.confirm || resume.confirm;
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);

    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    // The numbers of cases were looked at before the plan was made.
    SRunOptions guards = options;
    guards.minCases = 0;
    const std::vector<std::wstring> problems = FindProblems(guards, setup, state->GetPlan().cases.size());
    Quarantine quarantine;
    if (!options.quarantine.empty())
    {
        SPlan plan = state->GetPlan();
        quarantine = ReadQuarantine(options.quarantine, setup, plan);
    }
    const std::vector<std::uint32_t> cases = state->GetMissingCases();
    const std::unique_ptr<CJournalWriter> writer = folder.ContinueRun(state->GetPlan());
    CarryOut({options, setup, environment, folder, *state, {}}, *writer, problems, cases);
    return Conclude(folder, options.previous, std::move(quarantine));
}

} // namespace Runner
