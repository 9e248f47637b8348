// The search of the data directory.

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/lutestsuite/selection/discoverymodels.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/scopedworkingdirectory.h"

namespace
{

using discoverymodels::SJournal;
using LuTestSuite::SUnitTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class ScanDirectoryForUnitTests : public testing::Test
{
protected:
    std::vector<SUnitTest> Scan(bool removeDisabled = true) const
    {
        return LuTestSuiteUtils::ScanDirectoryForUnitTests(m_folder.GetPath(), removeDisabled);
    }

    /// The data directories found below the test's folder, with "/".
    std::vector<std::wstring> ScanForDirectories() const
    {
        std::vector<std::wstring> directories;
        for (const SUnitTest& test : Scan())
        {
            EXPECT_TRUE(test.dataDirectory.starts_with(m_folder.GetPath()));
            directories.push_back(test.dataDirectory.substr(m_folder.GetPath().size()));
            std::ranges::replace(directories.back(), L'\\', L'/');
        }
        return directories;
    }

    static std::vector<std::wstring> GetCaseNames(const SUnitTest& test)
    {
        std::vector<std::wstring> names;
        for (const LuTestSuite::STestCase& testCase : test.cases)
        {
            names.push_back(testCase.name);
        }
        return names;
    }

    /// Expects that the folder of this class causes this warning and is neither a unit test nor searched further.
    void ExpectWarning(const std::wstring& className, const std::wstring& warning)
    {
        m_folder.MakeFolder(className + L"/CScanNamed");
        EXPECT_THAT(ScanForDirectories(), IsEmpty());
        EXPECT_THAT(m_output.GetLines(), ElementsAre(CapturedOutput::BoldColored(warning, LuColor::c_GOLDENROD)));
    }

    CapturedOutput m_output;
    ScopedFolder m_folder;
};

TEST_F(ScanDirectoryForUnitTests, FindsAFolderNamedAfterAClass)
{
    const std::wstring directory = m_folder.MakeFolder(L"CScanNamed");

    const std::vector<SUnitTest> tests = Scan();

    ASSERT_EQ(tests.size(), 1U);
    EXPECT_EQ(tests[0].className, L"CScanNamed");
    EXPECT_EQ(tests[0].dataDirectory, directory);
    EXPECT_THAT(GetCaseNames(tests[0]), ElementsAre(L"eins", L"zwei"));
    EXPECT_THAT(tests[0].contacts, IsEmpty());
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(ScanDirectoryForUnitTests, NamesTheModuleOfTheClass)
{
    m_folder.MakeFolder(L"CScanNamed");

    EXPECT_EQ(Scan().at(0).moduleName, LbPath::GetLastComponent(LbOs::GetExecutablePath()));
}

TEST_F(ScanDirectoryForUnitTests, FindsFoldersAtAnyDepth)
{
    m_folder.MakeFolder(L"CScanNamed");
    m_folder.MakeFolder(L"a/CScanNamed");
    m_folder.MakeFolder(L"a/b/c/d/CScanFiles");
    m_folder.MakeFolder(L"leer/ganz leer");

    EXPECT_THAT(ScanForDirectories(), UnorderedElementsAre(L"CScanNamed/", L"a/CScanNamed/", L"a/b/c/d/CScanFiles/"));
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(ScanDirectoryForUnitTests, SearchesTheLastSubFolderFirst)
{
    for (const wchar_t* name : {L"a/CScanNamed", L"b/CScanNamed", L"c/CScanNamed"})
    {
        m_folder.MakeFolder(name);
    }
    std::vector<std::wstring> expected;
    LbOs::VisitDirectory(m_folder.GetPath(), [&](const LbOs::SDirectoryEntry& entry) {
        expected.insert(expected.begin(), entry.name + L"/CScanNamed/");
    });

    EXPECT_EQ(ScanForDirectories(), expected);
}

TEST_F(ScanDirectoryForUnitTests, FindsUnitTestsOfAFolderBeforeThoseBelow)
{
    m_folder.MakeFolder(L"a/CScanNamed");
    m_folder.MakeFolder(L"CScanFiles");

    EXPECT_THAT(ScanForDirectories(), ElementsAre(L"CScanFiles/", L"a/CScanNamed/"));
}

TEST_F(ScanDirectoryForUnitTests, DoesNotSearchUnitTestFolders)
{
    m_folder.MakeFolder(L"CScanNamed/CScanFiles");
    m_folder.MakeFolder(L"CScanNamed/tiefer/CScanFiles");

    EXPECT_THAT(ScanForDirectories(), ElementsAre(L"CScanNamed/"));
}

TEST_F(ScanDirectoryForUnitTests, SkipsFoldersOfVersionControl)
{
    m_folder.MakeFolder(L".svn/CScanNamed");
    m_folder.MakeFolder(L"vorher.svn nachher/CScanNamed");
    m_folder.MakeFolder(L"a/.svn/CScanNamed");

    EXPECT_THAT(ScanForDirectories(), IsEmpty());
}

TEST_F(ScanDirectoryForUnitTests, SearchesFoldersWithSimilarNames)
{
    m_folder.MakeFolder(L".SVN/CScanNamed");
    m_folder.MakeFolder(L"svn/CScanNamed");
    m_folder.MakeFolder(L".git/CScanNamed");

    EXPECT_EQ(ScanForDirectories().size(), 3U);
}

TEST_F(ScanDirectoryForUnitTests, DoesNotTakeTheDataDirectoryForAFolderOfVersionControl)
{
    const std::wstring directory = m_folder.MakeFolder(L"kopie.svn");
    m_folder.MakeFolder(L"kopie.svn/CScanNamed");

    EXPECT_EQ(LuTestSuiteUtils::ScanDirectoryForUnitTests(directory, true).size(), 1U);
}

TEST_F(ScanDirectoryForUnitTests, AcceptsADataDirectoryWithoutSeparator)
{
    const std::wstring directory = m_folder.MakeFolder(L"CScanNamed");

    const auto tests = LuTestSuiteUtils::ScanDirectoryForUnitTests(LbPath::WithoutSeparator(m_folder.GetPath()), true);

    ASSERT_EQ(tests.size(), 1U);
    EXPECT_EQ(tests[0].dataDirectory, directory);
}

TEST_F(ScanDirectoryForUnitTests, TreatsTheDataDirectoryItselfAsAUnitTest)
{
    const std::wstring directory = m_folder.MakeFolder(L"CScanNamed");
    m_folder.MakeFolder(L"CScanNamed/CScanFiles");

    for (const std::wstring& given : {directory, LbPath::WithoutSeparator(directory)})
    {
        const auto tests = LuTestSuiteUtils::ScanDirectoryForUnitTests(given, true);
        ASSERT_EQ(tests.size(), 1U);
        EXPECT_EQ(tests[0].className, L"CScanNamed");
        EXPECT_EQ(tests[0].dataDirectory, directory);
    }
}

TEST_F(ScanDirectoryForUnitTests, FindsNothingInAMissingDirectory)
{
    EXPECT_THAT(LuTestSuiteUtils::ScanDirectoryForUnitTests(m_folder.GetPathOf(L"fehlt"), true), IsEmpty());
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(ScanDirectoryForUnitTests, IgnoresFilesNamedAfterAClass)
{
    m_folder.WriteFile(L"CScanNamed", "");

    EXPECT_THAT(ScanForDirectories(), IsEmpty());
}

TEST_F(ScanDirectoryForUnitTests, ComparesFolderNamesExactly)
{
    m_folder.MakeFolder(L"a/cscannamed");
    m_folder.MakeFolder(L"b/CScanNamed2");
    m_folder.MakeFolder(L"c/XCScanNamed");

    EXPECT_THAT(ScanForDirectories(), IsEmpty());
}

TEST_F(ScanDirectoryForUnitTests, SearchesFoldersOfClassesThatAreNoUnitTests)
{
    m_folder.MakeFolder(L"CScanObject/CScanNamed");

    EXPECT_THAT(ScanForDirectories(), ElementsAre(L"CScanObject/CScanNamed/"));
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(ScanDirectoryForUnitTests, WarnsOfAFolderOfTheBaseClass)
{
    ExpectWarning(L"LuUnitTest",
                  L"Warnung: Zum Verzeichnis LuUnitTest gehörende Unit-Test Klasse hat keine eigene RTTI.\n");
}

TEST_F(ScanDirectoryForUnitTests, WarnsOfAClassThatCannotBeCreated)
{
    ExpectWarning(L"CScanAbstract",
                  L"Warnung: Unit-Test CScanAbstract hat keine RTTI-Create Methode, kann nicht instanziert werden.\n");
}

TEST_F(ScanDirectoryForUnitTests, WarnsOfAConstructorThatThrows)
{
    ExpectWarning(L"CScanThrowsWhenMade", L"Warnung: Fehler beim Instanzieren von Unit-Test CScanThrowsWhenMade.\n");
}

TEST_F(ScanDirectoryForUnitTests, WarnsOfACreateFunctionThatReturnsNull)
{
    ExpectWarning(L"CScanMakesNothing", L"Warnung: Fehler beim Instanzieren von Unit-Test CScanMakesNothing.\n");
}

TEST_F(ScanDirectoryForUnitTests, WarnsOfACreateFunctionThatReturnsNoUnitTest)
{
    ExpectWarning(L"CScanMakesNoUnitTest", L"Warnung: Fehler beim Instanzieren von Unit-Test CScanMakesNoUnitTest.\n");
}

TEST_F(ScanDirectoryForUnitTests, WarnsOfSubtestsThatCannotBeListed)
{
    ExpectWarning(L"CScanThrowsOnInit", L"Warnung: Falsche Konfiguration des Unit-Test CScanThrowsOnInit.\n");
}

TEST_F(ScanDirectoryForUnitTests, WarnsOfADataDirectoryThatIsRefused)
{
    ExpectWarning(L"CScanThrowsOnDirectory", L"Warnung: Falsche Konfiguration des Unit-Test CScanThrowsOnDirectory.\n");
}

TEST_F(ScanDirectoryForUnitTests, KeepsTheCasesCollectedBeforeAnException)
{
    m_folder.MakeFolder(L"CScanThrowsOnName");

    const std::vector<SUnitTest> tests = Scan();

    ASSERT_EQ(tests.size(), 1U);
    EXPECT_THAT(GetCaseNames(tests[0]), ElementsAre(L"Fall 0", L"Fall 1"));
    EXPECT_EQ(m_output.GetText(), L"Warnung: Falsche Konfiguration des Unit-Test CScanThrowsOnName.\n");
}

TEST_F(ScanDirectoryForUnitTests, KeepsTheAvailableCasesOfAnExcessiveCount)
{
    m_folder.MakeFolder(L"CScanHugeCount");

    const std::vector<SUnitTest> tests = Scan();

    ASSERT_EQ(tests.size(), 1U);
    EXPECT_THAT(GetCaseNames(tests[0]), ElementsAre(L"Fall 0", L"Fall 1"));
    EXPECT_EQ(m_output.GetText(), L"Warnung: Falsche Konfiguration des Unit-Test CScanHugeCount.\n");
}

TEST_F(ScanDirectoryForUnitTests, GoesOnAfterWarnings)
{
    m_folder.MakeFolder(L"CScanAbstract");
    m_folder.MakeFolder(L"CScanNamed");
    m_folder.MakeFolder(L"LuUnitTest");

    EXPECT_THAT(ScanForDirectories(), ElementsAre(L"CScanNamed/"));
    EXPECT_EQ(m_output.GetLines().size(), 2U);
}

TEST_F(ScanDirectoryForUnitTests, OmitsUnitTestsWithoutCasesSilently)
{
    m_folder.MakeFolder(L"CScanEmpty/CScanNamed");

    EXPECT_THAT(ScanForDirectories(), IsEmpty());
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(ScanDirectoryForUnitTests, DistinguishesFileDataSetsFromNamedCases)
{
    m_folder.WriteFile(L"CScanFiles/b.txt", "");
    const std::wstring path = m_folder.WriteFile(L"CScanFiles/ä.txt", "");
    m_folder.WriteFile(L"CScanFiles/c.bin", "");

    const SUnitTest test = Scan().at(0);

    ASSERT_THAT(GetCaseNames(test), ElementsAre(L"b.txt", L"ä.txt", L"benannt"));
    EXPECT_EQ(test.cases[1].dataSetFile, path);
    EXPECT_EQ(test.cases[1].GetKind(), 1U);
    EXPECT_EQ(test.cases[2].dataSetFile, L"");
    EXPECT_EQ(test.cases[2].GetKind(), 0U);
    EXPECT_THAT(test.GetDataSetFiles(), ElementsAre(test.dataDirectory + L"b.txt", path));
}

TEST_F(ScanDirectoryForUnitTests, DoesNotTreatAFolderAsADataSet)
{
    m_folder.MakeFolder(L"CScanNamed/eins");
    m_folder.WriteFile(L"CScanNamed/tiefer/zwei", "");

    EXPECT_THAT(Scan().at(0).GetDataSetFiles(), IsEmpty());
}

TEST_F(ScanDirectoryForUnitTests, FindsDataSetsOfAClassThatKeepsItsDirectory)
{
    const std::wstring path = m_folder.WriteFile(L"CScanOwnDirectory/daten.bin", "");

    EXPECT_EQ(Scan().at(0).cases.at(0).dataSetFile, path);
}

TEST_F(ScanDirectoryForUnitTests, StartsCasesWithoutParameters)
{
    m_folder.MakeFolder(L"CScanNamed");

    EXPECT_THAT(Scan().at(0).cases.at(0).parameters, IsEmpty());
}

TEST_F(ScanDirectoryForUnitTests, GivesEachCaseAParameterMapWithALoadFactorOfOneAndAHalf)
{
    m_folder.WriteFile(L"CScanFiles/a.txt", "");
    m_folder.WriteFile(L"CScanNamed/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name='eins'><Parallel>true</Parallel></TestCase></ExtraInfo>");

    std::size_t count = 0;
    for (const SUnitTest& test : Scan())
    {
        for (const LuTestSuite::STestCase& testCase : test.cases)
        {
            EXPECT_EQ(testCase.parameters.max_load_factor(), 1.5F);
            ++count;
        }
    }
    EXPECT_EQ(count, 4U);
}

TEST_F(ScanDirectoryForUnitTests, GivesACaseDisabledByItsClassAMapOf128Buckets)
{
    m_folder.MakeFolder(L"CScanDisables");

    const std::vector<LuTestSuite::STestCase> cases = Scan(false).at(0).cases;

    ASSERT_EQ(cases.size(), 2U);
    EXPECT_THAT(cases[0].parameters, IsEmpty());
    EXPECT_THAT(cases[1].parameters, ElementsAre(Pair(L"Enable", LbVariant(false))));
    EXPECT_GE(cases[1].parameters.bucket_count(), 128U);
    EXPECT_EQ(cases[1].parameters.max_load_factor(), 1.5F);
}

TEST_F(ScanDirectoryForUnitTests, CallsTheUnitTestInOrderAndDestroysIt)
{
    SJournal& journal = SJournal::GetInstance();
    journal.calls.clear();
    const std::wstring directory = m_folder.MakeFolder(L"CScanJournal");

    Scan();

    EXPECT_THAT(journal.calls, ElementsAre(L"SetDataDirectory " + directory, L"InitSubtests", L"GetSubtestCount",
                                           L"GetSubtestName 0", L"GetSubtestName 1"));
    EXPECT_EQ(journal.alive, 0);
}

TEST_F(ScanDirectoryForUnitTests, StartsEachClassInTheFolderOfTheExecutable)
{
    m_folder.MakeFolder(L"a/CScanMoves");
    m_folder.MakeFolder(L"b/CScanMoves");
    const ScopedWorkingDirectory here(m_folder.GetPath());
    const std::wstring before = LbOs::GetWorkingDirectory();

    const std::vector<SUnitTest> tests = Scan();

    ASSERT_EQ(tests.size(), 2U);
    for (const SUnitTest& test : tests)
    {
        EXPECT_EQ(LbPath::WithSeparator(test.cases.at(0).name),
                  LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
    }
    EXPECT_EQ(LbOs::GetWorkingDirectory(), before);
}

TEST_F(ScanDirectoryForUnitTests, SearchesARelativeDirectoryAlthoughAClassChangesTheWorkingDirectory)
{
    m_folder.MakeFolder(L"Daten/a/CScanMoves");
    m_folder.MakeFolder(L"Daten/b/CScanMoves");
    const ScopedWorkingDirectory here(m_folder.GetPath());
    const std::wstring before = LbOs::GetWorkingDirectory();

    const std::vector<SUnitTest> tests = LuTestSuiteUtils::ScanDirectoryForUnitTests(L"Daten", true);

    ASSERT_EQ(tests.size(), 2U);
    EXPECT_EQ(tests[0].cases.at(0).name, before);
    EXPECT_EQ(tests[1].cases.at(0).name, before);
}

TEST_F(ScanDirectoryForUnitTests, RemovesDisabledCasesOnRequest)
{
    m_folder.WriteFile(L"CScanNamed/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name='eins'><Enable>false</Enable></TestCase></ExtraInfo>");

    EXPECT_THAT(GetCaseNames(Scan(true).at(0)), ElementsAre(L"zwei"));
    EXPECT_THAT(GetCaseNames(Scan(false).at(0)), ElementsAre(L"eins", L"zwei"));
}

TEST_F(ScanDirectoryForUnitTests, OmitsUnitTestsWithOnlyDisabledCases)
{
    m_folder.WriteFile(L"CScanNamed/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name='*'><Enable>false</Enable></TestCase></ExtraInfo>");

    EXPECT_THAT(Scan(true), IsEmpty());
    EXPECT_EQ(Scan(false).size(), 1U);
}

} // namespace
