#include "testing/lutestsuiterunner/execution/guards.h"

#include <algorithm>
#include <iterator>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/modules.h"
#include "base/os/platform.h"

namespace Runner
{

namespace
{

/// Empty if the module is loaded.
std::wstring findModuleProblem(const std::wstring& name)
{
    const std::wstring path =
        LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + LbPath::ToNative(name) + LbOs::c_ModuleSuffix;
    if (!LbFileSystem::IsFile(path))
    {
        return LbFormat(L"Das Modul '%s' fehlt", name);
    }
    // If the module is already loaded, this only increments its use count.
    std::wstring reason;
    return LbOs::LoadModule(path, reason) ? L"" : LbFormat(L"Das Modul '%s' konnte nicht geladen werden", name);
}

} // namespace

std::vector<std::wstring> FindModuleProblems(const LuTestSuiteSetup& setup)
{
    std::vector<std::wstring> problems;
    for (const std::wstring& name : setup.dlls)
    {
        if (std::wstring problem = findModuleProblem(name); !problem.empty())
        {
            problems.push_back(std::move(problem));
        }
    }
    return problems;
}

void RequireModules(const LuTestSuiteSetup& setup)
{
    if (const std::vector<std::wstring> problems = FindModuleProblems(setup); !problems.empty())
    {
        throw problems.front();
    }
}

void RefuseRepetitions(const LuTestSuiteSetup& setup)
{
    if (setup.params.repetitions != 1)
    {
        throw std::wstring(L"Die Option '-r' gibt es hier nicht: jeder Testfall wird einmal ausgeführt");
    }
}

std::vector<std::wstring> FindProblems(const SRunOptions& options, const LuTestSuiteSetup& setup, std::size_t caseCount)
{
    std::vector<std::wstring> problems;
    if (caseCount < options.minCases)
    {
        const std::wstring hit = caseCount == 1 ? std::wstring(L"1 Testfall") : LbFormat(L"%u Testfälle", caseCount);
        problems.push_back(LbFormat(L"Die Auswahl trifft %s, verlangt sind mindestens %u", hit, options.minCases));
    }
    if (options.requireAllModules)
    {
        std::ranges::move(FindModuleProblems(setup), std::back_inserter(problems));
    }
    return problems;
}

} // namespace Runner
