#include "testing/lutestsuiterunner/execution/guards.h"

#include <algorithm>
#include <iterator>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/modules.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"

namespace Runner
{

namespace
{

std::wstring getModulePath(const std::wstring& name)
{
    return LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + LbPath::ToNative(name) + LbOs::c_ModuleSuffix;
}

bool isMissing(const std::wstring& name)
{
    return !LbFileSystem::IsFile(getModulePath(name));
}

std::wstring describeMissing(const std::wstring& name)
{
    return LbFormat(L"Das Modul '%s' fehlt: '%s' gibt es nicht", name, getModulePath(name));
}

/// Empty if the module is loaded, or if it is missing and need not exist.
std::wstring findModuleProblem(const std::wstring& name, bool mustExist)
{
    if (isMissing(name))
    {
        return mustExist ? describeMissing(name) : L"";
    }
    // If the module is already loaded, this only increments its use count.
    std::wstring reason;
    return LbOs::LoadModule(getModulePath(name), reason)
               ? L""
               : LbFormat(L"Das Modul '%s' konnte nicht geladen werden", name);
}

void addModuleProblems(const std::vector<std::wstring>& names, bool mustExist, std::vector<std::wstring>& problems)
{
    for (const std::wstring& name : names)
    {
        std::wstring problem = findModuleProblem(name, mustExist);
        if (!problem.empty() && std::ranges::find(problems, problem) == problems.end())
        {
            problems.push_back(std::move(problem));
        }
    }
}

} // namespace

std::vector<std::wstring> FindMissingModules(const LuTestSuiteSetup& setup)
{
    std::vector<std::wstring> problems;
    for (const std::wstring& name : setup.dlls)
    {
        if (isMissing(name))
        {
            problems.push_back(describeMissing(name));
        }
    }
    return problems;
}

std::vector<std::wstring> FindModuleProblems(const LuTestSuiteSetup& setup)
{
    std::vector<std::wstring> problems;
    addModuleProblems(setup.dlls, /*mustExist*/ true, problems);
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
        addModuleProblems(LuTestSuiteEnvironment::GetTestDLLs(), /*mustExist*/ false, problems);
    }
    return problems;
}

} // namespace Runner
