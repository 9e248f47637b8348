#include "testing/lutestsuiterunner/commands/planned.h"

#include <functional>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "base/os/machine.h"
#include "testing/lutestsuiterunner/commands/missingparts.h"
#include "testing/lutestsuiterunner/commands/outcome.h"
#include "testing/lutestsuiterunner/commands/workflow.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/execution/selection.h"
#include "testing/lutestsuiterunner/journal/reader.h"

namespace Runner
{

namespace
{

/// If the program for child processes is missing beside this program, returns the missing path; otherwise an empty
/// text. Every shard needs this program: cases that were running when a host died run again in child processes.
std::wstring findMissingProgram()
{
    const std::wstring path =
        LbPath::WithSeparator(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable)) + LUTESTSUITE_CHILD_PROGRAM;
    return LbFileSystem::IsFile(path) ? std::wstring() : path;
}

/// Throws if `missing` is not empty. Also writes the problem to the journal, because the submitter may not see what
/// this process prints.
void requireNothing(const std::wstring& missing, const wchar_t* kind, const std::wstring& folder, const SPlan& plan)
{
    if (missing.empty())
    {
        return;
    }
    const std::wstring problem = LbFormat(L"Auf dem Rechner %s fehlt %s %s", LbOs::GetMachineName(), kind, missing);
    const std::unique_ptr<CJournalWriter> writer = JoinRun(folder, plan);
    writer->Write(SRunProblem{problem});
    writer->Close();
    throw LbException(problem);
}

void requireShard(const SPlan& plan, const SRunOptions& call, const std::wstring& folder)
{
    if (!plan.part || plan.shard != SShard{call.shard, call.shardCount})
    {
        throw LbFormat(L"Der Ordner %s enthält nicht den Plan von Teil %u von %u", folder, call.shard, call.shardCount);
    }
}

/// The expected times that the plan contains.
PreviousCases getExpected(const SPlan& plan)
{
    PreviousCases expected(plan.cases.size());
    for (std::size_t index = 0; index < plan.cases.size(); ++index)
    {
        if (plan.cases[index].expected != 0)
        {
            expected[index] = SPreviousCase{plan.cases[index].expected, false};
        }
    }
    return expected;
}

} // namespace

int RunPlanned(const SRunOptions& call)
{
    MoveLibraryLinesToErrors();
    const std::wstring folder = GetRunFolder(call.out);
    const std::unique_ptr<CRunState> state = LoadRun(folder);
    const SPlan& plan = state->GetPlan();
    requireShard(plan, call, folder);
    requireNothing(FindMissingFolder(plan), L"der Ordner", folder, plan);
    requireNothing(findMissingProgram(), L"das Programm", folder, plan);
    const SRunOptions options = EnterRun(plan);
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);

    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    requireNothing(FindMissingClass(plan), L"die Klasse", folder, plan);
    const PreviousCases expected = getExpected(plan);
    std::vector<std::uint32_t> cases = state->GetMissingCases();
    SortCases(cases, EOrder::LongestFirst, expected, 0);
    const std::unique_ptr<CJournalWriter> writer = JoinRun(folder, plan);
    CarryOut({options, setup, environment, folder, *state, expected}, *writer, {}, cases);
    return GetStatus(*state);
}

} // namespace Runner
