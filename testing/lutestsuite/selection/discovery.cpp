/// Searches the data directory for unit tests.

#include <algorithm>
#include <memory>

#include "base/lbfilelisting.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/luunittest.h"
#include "base/subtesthints.h"
#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/environment/unittestfactory.h"
#include "testing/lutestsuite/environment/workingdirectory.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/settings/parameters.h"

namespace
{

using LuTestSuite::STestCase;
using LuTestSuite::SUnitTest;

constexpr std::uint32_t c_ReservedCases = 4096;

/// Asks the instance for its sub-tests. A failure prints a warning; the cases collected so far are kept.
void collectCases(LuUnitTest& instance, SUnitTest& test)
{
    try
    {
        instance.SetDataDirectory(test.dataDirectory);
        instance.InitSubtests();
        const std::uint32_t count = instance.GetSubtestCount();
        // An absurd count must not exhaust memory before the available names are read.
        test.cases.reserve(std::min(count, c_ReservedCases));
        for (std::uint32_t index = 0; index < count; ++index)
        {
            std::wstring name = instance.GetSubtestName(index);
            STestCase& testCase = test.cases.emplace_back();
            testCase.name = std::move(name);
            LuTestSuite::InitParameters(testCase.parameters);
            if (instance.IsSubtestDisabled(index))
            {
                LuTestSuite::GetParameter(testCase.parameters, L"Enable") = false;
            }
        }
    }
    catch (...)
    {
        LuTestSuite::WriteWarning(L"Warnung: Falsche Konfiguration des Unit-Test %s.\n", test.className);
    }
}

/// For a class that names or counts its cases itself, remembers the index of each name. So a case is found later
/// without reading all names.
void rememberNames(const LuUnitTest& instance, const SUnitTest& test)
{
    const LbClassFacts& facts = instance.GetRTTI().GetFacts();
    if (facts.type != nullptr && !facts.hasPlainList)
    {
        LbSubtestHints::Remember(
            *facts.type, test.dataDirectory, static_cast<std::uint32_t>(test.cases.size()),
            [&test](std::uint32_t index) -> const std::wstring& { return test.cases[index].name; });
    }
}

/// The listing of the unit test's folder. Takes it from the instance if possible, so that the folder is read only once.
std::shared_ptr<const LbFileListing> getFiles(const LuUnitTest& instance, const SUnitTest& test)
{
    const bool isSame = instance.GetDataDirectory() == test.dataDirectory;
    return isSame ? instance.GetDataFileNames().GetListing() : LbFileListing::Get(test.dataDirectory);
}

/// A case has a data set file if the unit test's folder contains a file with the case's name.
void assignDataSetFiles(const LuUnitTest& instance, SUnitTest& test)
{
    const std::shared_ptr<const LbFileListing> files = getFiles(instance, test);
    // Cases created from files are in the order of the files' names, so the next name usually matches.
    std::uint32_t next = 0;
    for (STestCase& testCase : test.cases)
    {
        if (next == files->GetCount() || files->GetName(next) != testCase.name)
        {
            next = files->Find(testCase.name).value_or(files->GetCount());
        }
        if (next < files->GetCount())
        {
            testCase.dataSetFile = LuTestSuite::LuDataSetFile(files, next++);
        }
    }
}

/// Prevents endless recursion through links to folders: enters each target only once, and never a target that contains
/// the link. Links to folders of unit tests need no check, because these folders are not searched.
class CLinkedDirectories
{
public:
    bool MayEnter(const std::wstring& directory, const std::wstring& linkName)
    {
        const std::wstring target = LbOs::GetCanonicalPath(directory + linkName) + LbPath::c_Separator;
        const std::wstring place = LbOs::GetCanonicalPath(directory) + LbPath::c_Separator;
        return !place.starts_with(target) && m_entered.insert(target).second;
    }

private:
    std::unordered_set<std::wstring> m_entered;
};

/// True if objects of the class that belongs to a folder can be created; otherwise prints a warning.
bool canBeCreated(const LbRTTI& type, const std::wstring& folderName)
{
    if (type.IsExactly(LuUnitTest::RTTI))
    {
        LuTestSuite::WriteWarning(L"Warnung: Zum Verzeichnis %s gehörende Unit-Test Klasse hat keine eigene RTTI.\n",
                                  folderName);
        return false;
    }
    if (type.GetCreate() == nullptr)
    {
        LuTestSuite::WriteWarning(
            L"Warnung: Unit-Test %s hat keine RTTI-Create Methode, kann nicht instanziert werden.\n", folderName);
        return false;
    }
    return true;
}

} // namespace

std::vector<LuTestSuite::SUnitTest> LuTestSuiteUtils::ScanDirectoryForUnitTests(const std::wstring& dataDir,
                                                                                bool removeDisabled)
{
    const LuTestSuite::CCrashThread thread;
    std::vector<SUnitTest> tests;
    std::vector<std::wstring> pendingDirs;
    CLinkedDirectories links;
    const std::wstring root = dataDir.empty() ? dataDir : AddBackslash(dataDir);
    processDir(root, GetFileNameOnly(root), tests, pendingDirs, removeDisabled);
    while (!pendingDirs.empty())
    {
        const std::wstring directory = std::move(pendingDirs.back());
        pendingDirs.pop_back();
        LbOs::VisitDirectory(directory, [&](const LbOs::SDirectoryEntry& entry) {
            if (!entry.isDirectory || entry.name.find(L".svn") != std::wstring::npos)
            {
                return;
            }
            const std::size_t pendingCount = pendingDirs.size();
            processDir(directory + entry.name + LbPath::c_Separator, entry.name, tests, pendingDirs, removeDisabled);
            const bool isPending = pendingDirs.size() > pendingCount;
            if (isPending && entry.isLink && !links.MayEnter(directory, entry.name))
            {
                pendingDirs.pop_back();
            }
        });
    }
    return tests;
}

void LuTestSuiteUtils::processDir(const std::wstring& directory, const std::wstring& folderName, UnitTests& tests,
                                  std::vector<std::wstring>& pendingDirs, bool removeDisabled)
{
    const LbRTTI* const type = LbRTTI::Find(folderName);
    if (type == nullptr || !type->IsDerivedFrom(LuUnitTest::RTTI))
    {
        pendingDirs.push_back(directory);
        return;
    }
    if (!canBeCreated(*type, folderName))
    {
        return;
    }
    const LuTestSuite::CNamedUnderWay underWay(LuTestSuite::EActivity::FindCases, folderName, directory);
    const LuTestSuite::CKeptWorkingDirectory workingDirectory;
    // If the path is relative, does not change the working directory, because the path refers to it.
    if (LbOs::IsAbsolutePath(directory))
    {
        LuTestSuite::EnterExecutableDirectory();
    }
    const std::unique_ptr<LuUnitTest> instance = LuTestSuite::CreateUnitTestOrNull(folderName);
    if (!instance)
    {
        LuTestSuite::WriteWarning(L"Warnung: Fehler beim Instanzieren von Unit-Test %s.\n", folderName);
        return;
    }
    SUnitTest test;
    test.className = folderName;
    test.dataDirectory = directory;
    test.moduleName = GetModuleName(*type);
    collectCases(*instance, test);
    rememberNames(*instance, test);
    assignDataSetFiles(*instance, test);
    processExtraInfoFile(test);
    if (removeDisabled)
    {
        removeDisabledCases(test);
    }
    if (!test.cases.empty())
    {
        tests.push_back(std::move(test));
    }
}
