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

std::wstring DescribeWithoutFolder(const std::vector<std::wstring>& suites)
{
    constexpr std::size_t c_MostNamed = 3;
    if (suites.empty())
    {
        return {};
    }
    if (suites.size() == 1)
    {
        return LbFormat(L"Im Datenverzeichnis fehlt ein Ordner für %s: 'LuTestSuiteRunner folders' legt ihn an",
                        suites.front());
    }
    std::wstring names = suites.front();
    for (std::size_t index = 1; index < std::min(c_MostNamed, suites.size()); ++index)
    {
        names += L", " + suites[index];
    }
    if (suites.size() > c_MostNamed)
    {
        names += LbFormat(L" und %u weitere", suites.size() - c_MostNamed);
    }
    return LbFormat(L"Im Datenverzeichnis fehlen Ordner für %s: 'LuTestSuiteRunner folders' legt sie an", names);
}

void RefuseRepetitions(const LuTestSuiteSetup& setup)
{
    if (setup.params.repetitions != 1)
    {
        throw std::wstring(L"Die Option '-r' gibt es hier nicht: jeder Testfall wird einmal ausgeführt");
    }
}

std::vector<std::wstring> FindProblems(const SRunOptions& options, const LuTestSuiteSetup& setup, std::size_t caseCount,
                                       const std::vector<std::wstring>& suitesWithoutFolder)
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
        if (std::wstring problem = DescribeWithoutFolder(suitesWithoutFolder); !problem.empty())
        {
            problems.push_back(std::move(problem));
        }
    }
    return problems;
}

} // namespace Runner
